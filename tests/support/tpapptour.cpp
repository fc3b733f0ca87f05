#include "tpapptour.h"

#include "appdelegate.h"
#include "tpdevengine.h"
#include "tpdeviceaddress.h"
#include "tpeditorvc.h"
#include "tpengineapi.h"
#include "tplang.h"
#include "tpnavigationstack.h"
#include "tpownerfile.h"
#include "tppresenter.h"
#include "tpscriptslistvc.h"
#include "tpsettingsvc.h"
#include "tptabbarcontroller.h"

#include "tptestutil.h"

#include <QDir>
#include <QDirIterator>
#include <QJsonObject>
#include <QQmlApplicationEngine>
#include <QQuickWindow>
#include <QSettings>
#include <QTest>

#include <arpa/inet.h>
#include <netinet/in.h>

namespace {

bool copyFolder(const QString &relativeFrom, const QString &to)
{
    const QString from = QDir(relativeFrom).absolutePath();
    QDirIterator it(from, QDir::Files | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString source = it.next();
        const QString target = to + u'/' + QDir(from).relativeFilePath(source);
        if (!QDir().mkpath(QFileInfo(target).path()) || !QFile::copy(source, target))
            return false;
    }
    return true;
}

// A Wi-Fi address, so that the connection rows look as they do on a phone.
std::optional<QList<TPInterfaceEntry>> sampleInterfaces()
{
    in_addr address{};
    inet_pton(AF_INET, "192.168.1.23", &address);
    return QList<TPInterfaceEntry>{
        {"en0", true, AF_INET,
         QByteArray(reinterpret_cast<const char *>(&address), sizeof address)}};
}

template <typename Condition>
bool waitFor(Condition condition)
{
    return QTest::qWaitFor(condition, 10000);
}

// Lets transitions and pending replies finish before a stop.
void settle()
{
    QTest::qWait(500);
}

int rowOfPath(const TPScriptsListVC *list, const QString &path)
{
    for (int row = 0; row < list->rows()->rowCount(); ++row) {
        if (list->rows()->entryAt(row).toObject().value(QStringLiteral("path")).toString() == path)
            return row;
    }
    return -1;
}

} // namespace

TPAppTour::TPAppTour() = default;

TPAppTour::~TPAppTour()
{
    m_qml.reset();
    m_delegate.reset();
    m_engine.reset();
    TPSetInterfaceSource({});
}

bool TPAppTour::prepare(const QString &samplesFolder, QString *error)
{
    m_samplesFolder = QDir(samplesFolder).absolutePath();
    if (!m_work.isValid() || !QFileInfo(m_samplesFolder).isDir()) {
        *error = QStringLiteral("no sample scripts in %1").arg(samplesFolder);
        return false;
    }
    TPSetInterfaceSource(sampleInterfaces);
    return true;
}

bool TPAppTour::startEngine(const QString &language, QString *error)
{
    // Every tour starts from the same scripts.
    const QString root = m_work.filePath(QStringLiteral("scripts-") + language);
    if (!QDir().mkpath(root) || !copyFolder(m_samplesFolder, root)) {
        *error = QStringLiteral("cannot copy the sample scripts from %1").arg(m_samplesFolder);
        return false;
    }
    m_engine = std::make_unique<TPDevEngine>(root);
    const quint16 port = m_engine->listen(0);
    if (port == 0) {
        *error = QStringLiteral("the development engine cannot listen");
        return false;
    }
    TPPointEngineAPIAt(port);
    return true;
}

bool TPAppTour::run(const QString &language, const Stop &atScreen, QString *error)
{
    if (!startEngine(language, error))
        return false;
    QSettings().clear();
    QSettings().setValue(QLatin1String(TPLangKey), language);
    const QString ownerRoot = m_work.filePath(QStringLiteral("owner-") + language);
    TPSetOwnerFileLocations({ownerRoot, ownerRoot + QStringLiteral("/AppGroup")});

    m_qml.reset();
    m_delegate = std::make_unique<AppDelegate>();
    m_qml = std::make_unique<QQmlApplicationEngine>();
    m_qml->setInitialProperties({{QStringLiteral("app"), QVariant::fromValue(m_delegate.get())}});
    m_qml->load(QUrl(QStringLiteral("qrc:/TPCompanion/Main.qml")));
    if (m_qml->rootObjects().isEmpty()) {
        *error = QStringLiteral("Main.qml did not load");
        return false;
    }
    m_window = qobject_cast<QQuickWindow *>(m_qml->rootObjects().first());
    m_delegate->didFinishLaunching();
    const bool walked = walk(atScreen, error);
    if (!walked && error->isEmpty())
        *error = QStringLiteral("the tour stopped");
    return walked;
}

bool TPAppTour::walk(const Stop &atScreen, QString *error)
{
    TPPresenter *presenter = m_delegate->presenter();
    const auto stop = [&](const char *name) {
        settle();
        return atScreen(QString::fromLatin1(name));
    };
    const auto fail = [error](const char *what) {
        *error = QString::fromLatin1(what);
        return false;
    };

    if (!waitFor([&] { return presenter->current() != nullptr; }))
        return fail("no first-run prompt");
    presenter->current()->setText(QStringLiteral("Tavo"));
    if (!stop("first-run-prompt"))
        return false;
    presenter->current()->triggerAction(0);
    if (!m_delegate->tabBarController())
        return fail("no tabs after saving the name");

    TPTabBarController *tabs = m_delegate->tabBarController();
    TPNavigationStack *scriptsStack = tabs->tabs().at(0).stack;
    auto *scripts = qobject_cast<TPScriptsListVC *>(scriptsStack->topViewController());
    if (!waitFor([&] { return scripts->rows()->rowCount() > 0; }))
        return fail("the root list stayed empty");
    if (!stop("scripts"))
        return false;

    scripts->didSelectRow(rowOfPath(scripts, QStringLiteral("games")));
    auto *games = qobject_cast<TPScriptsListVC *>(scriptsStack->topViewController());
    if (!games || !waitFor([&] { return games->rows()->rowCount() > 0; }))
        return fail("the games folder did not open");
    if (!stop("folder"))
        return false;
    scriptsStack->popViewController();

    scripts->onAddTapped();
    if (!stop("add-sheet"))
        return false;
    presenter->current()->triggerAction(1);
    if (!stop("new-folder-prompt"))
        return false;
    presenter->current()->setText(QStringLiteral("new tools"));
    presenter->current()->triggerAction(1);
    if (!waitFor([&] { return rowOfPath(scripts, QStringLiteral("new_tools")) >= 0; }) ||
        presenter->current())
        return fail("the new folder did not appear");

    scripts->didSelectRow(rowOfPath(scripts, QStringLiteral("main.lua")));
    auto *editor = qobject_cast<TPEditorVC *>(scriptsStack->topViewController());
    if (!editor || !waitFor([&] { return !editor->text().isEmpty(); }))
        return fail("the editor did not show main.lua");
    if (!stop("editor"))
        return false;
    editor->onSaveTapped();
    if (!waitFor([&] { return presenter->current() != nullptr; }))
        return fail("saving showed no alert");
    if (!stop("alert"))
        return false;
    presenter->current()->triggerAction(0);
    editor->onRunTapped();
    if (!waitFor([&] { return presenter->current() != nullptr; }))
        return fail("running showed no alert");
    presenter->current()->triggerAction(0);
    scriptsStack->popViewController();

    scripts->didSelectRow(rowOfPath(scripts, QStringLiteral("tools")));
    auto *tools = qobject_cast<TPScriptsListVC *>(scriptsStack->topViewController());
    if (!tools ||
        !waitFor([&] { return rowOfPath(tools, QStringLiteral("tools/broken.lua")) >= 0; }))
        return fail("the tools folder did not open");
    tools->didSelectRow(rowOfPath(tools, QStringLiteral("tools/broken.lua")));
    auto *broken = qobject_cast<TPEditorVC *>(scriptsStack->topViewController());
    if (!broken || !waitFor([&] { return broken->code()->syntaxErrorLine() > 0; }))
        return fail("the editor marked no syntax error in tools/broken.lua");
    if (!stop("editor-syntax-error"))
        return false;
    scriptsStack->popViewController();
    scriptsStack->popViewController();

    tabs->setSelectedIndex(1);
    if (!stop("store"))
        return false;

    tabs->setSelectedIndex(2);
    auto *settings = qobject_cast<TPSettingsVC *>(tabs->tabs().at(2).stack->topViewController());
    if (!stop("settings"))
        return false;
    settings->onSwitchChanged(4, true);
    if (!stop("settings-touch-debug"))
        return false;
    settings->onLangSegmentChanged(TPCurrentLang() == QLatin1String("en") ? 0 : 1);
    settings->onSwitchChanged(4, false);
    if (!stop("settings-other-language"))
        return false;
    tabs->setSelectedIndex(0);
    return stop("scripts-again");
}
