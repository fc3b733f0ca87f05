#include "tpapptour.h"

#include "app/appdelegate.h"
#include "app/tpappwindow.h"
#include "editor/tpcodeeditor.h"
#include "editor/tpeditorvc.h"
#include "editor/tphistoryvc.h"
#include "editor/tpversionvc.h"
#include "engine/tpengineapi.h"
#include "foundation/tpdeviceaddress.h"
#include "foundation/tplang.h"
#include "foundation/tpownerfile.h"
#include "platform/tpnavigationstack.h"
#include "platform/tppresenter.h"
#include "platform/tptabbarcontroller.h"
#include "scripts/tpfolderpickervc.h"
#include "scripts/tpquickopenvc.h"
#include "scripts/tpscriptslistvc.h"
#include "scripts/tpsearchvc.h"
#include "settings/tpsettingsvc.h"
#include "tpdevengine.h"

#include "tpquicktestutil.h"
#include "tptestutil.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QDirIterator>
#include <QJsonObject>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QSet>
#include <QSettings>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTest>
#include <QtQuickTest/quicktest.h>

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

// Whether anything under `object` is still moving or waiting: a page sliding in or out of a
// stack, a popup (an alert, a sheet) opening or closing, an activity indicator turning (or
// running while its spinner is still being made).
bool isMoving(QObject *object, QSet<QObject *> &seen)
{
    if (seen.contains(object))
        return false;
    seen.insert(object);
    if (object->inherits("QQuickStackView") && object->property("busy").toBool())
        return true;
    if (object->inherits("QQuickPopup") &&
        object->property("visible").toBool() != object->property("opened").toBool())
        return true;
    if (object->isQuickItemType() && object->property("running").toBool() &&
        object->property("visible").toBool())
        return true;
    const QObjectList children = object->children();
    if (std::any_of(children.begin(), children.end(),
                    [&seen](QObject *child) { return isMoving(child, seen); }))
        return true;
    if (auto *item = qobject_cast<QQuickItem *>(object)) {
        const QList<QQuickItem *> childItems = item->childItems();
        return std::any_of(childItems.begin(), childItems.end(),
                           [&seen](QQuickItem *child) { return isMoving(child, seen); });
    }
    return false;
}

// Waits until the window has come to rest and is laid out, so that a stop shows a screen,
// not a transition, and a touch lands where the screen is. An animation (a switch's knob, a
// row fading in) draws a frame after frame while it runs, so the window is at rest once it
// has drawn nothing new for a few frames' time.
void settle(QQuickWindow *window)
{
    constexpr int kQuietMs = 100;
    waitFor([window] {
        QSet<QObject *> seen;
        return !isMoving(window, seen) && !isMoving(window->contentItem(), seen) &&
               !QQuickTest::qIsPolishScheduled(window);
    });
    QSignalSpy drawn(window, &QQuickWindow::frameSwapped);
    QDeadlineTimer limit(10000);
    while (drawn.wait(kQuietMs) && !limit.hasExpired())
        drawn.clear();
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

TPAppTour::TPAppTour()
{
    // The tour clears and writes settings, drafts and history as the app does: never in the
    // user's own folders.
    QStandardPaths::setTestModeEnabled(true);
}

TPAppTour::~TPAppTour()
{
    m_appWindow.reset();
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
    // Every tour starts from the same scripts, in a folder of its own.
    ++m_runs;
    const QString root = m_work.filePath(QStringLiteral("scripts-%1-%2").arg(language).arg(m_runs));
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
    const QString ownerRoot =
        m_work.filePath(QStringLiteral("owner-%1-%2").arg(language).arg(m_runs));
    TPSetOwnerFileLocations({ownerRoot, ownerRoot + QStringLiteral("/AppGroup")});

    m_appWindow.reset();
    m_qml.reset();
    m_delegate = std::make_unique<AppDelegate>();
    m_qml = std::make_unique<QQmlEngine>();
    m_appWindow = std::make_unique<TPAppWindow>(*m_qml, *m_delegate);
    m_window = m_appWindow->window();
    if (!m_window) {
        *error = QStringLiteral("Main.qml did not load: ") + m_appWindow->errorString();
        return false;
    }
    m_delegate->didFinishLaunching();
    const bool walked = walk(atScreen, error);
    if (!walked && error->isEmpty())
        *error = QStringLiteral("the tour stopped");
    return walked;
}

bool TPAppTour::tap(const QString &name)
{
    QQuickItem *item = nullptr;
    if (!waitFor([&] {
            item = TPFindShownItem(m_window->contentItem(), name);
            return item && item->isEnabled();
        }))
        return false;
    QTest::mouseClick(m_window, Qt::LeftButton, {}, TPCentreOf(item));
    return true;
}

bool TPAppTour::type(const QString &fieldName, const QString &text)
{
    if (!tap(fieldName))
        return false;
    for (const QChar character : text)
        QTest::keyClick(m_window, character.toLatin1());
    return true;
}

bool TPAppTour::walk(const Stop &atScreen, QString *error)
{
    TPPresenter *presenter = m_delegate->presenter();
    const auto stop = [&](const char *name) {
        settle(m_window);
        return atScreen(QString::fromLatin1(name));
    };
    const auto fail = [error](const QString &what) {
        *error = what;
        return false;
    };
    // Every step is a touch on what the screen shows, as a person would make it.
    const auto touch = [&](const QString &name) {
        return tap(name) || fail(QStringLiteral("nothing named %1 to touch").arg(name));
    };
    const auto touchRow = [&](const TPScriptsListVC *list, const char *path) {
        const int row = rowOfPath(list, QString::fromUtf8(path));
        return (row >= 0 && tap(QStringLiteral("row%1").arg(row))) ||
               fail(QStringLiteral("no row for %1").arg(QString::fromUtf8(path)));
    };
    const auto answerAlert = [&](const char *action) {
        const bool shown = waitFor([&] { return presenter->current() != nullptr; });
        return (shown && touch(QString::fromLatin1(action)) &&
                waitFor([&] { return presenter->current() == nullptr; })) ||
               fail(QStringLiteral("no alert to answer with %1").arg(QLatin1String(action)));
    };
    const auto goBack = [&] {
        settle(m_window);
        return touch(QStringLiteral("backButton"));
    };

    if (!waitFor([&] { return presenter->current() != nullptr; }))
        return fail(QStringLiteral("no first-run prompt"));
    if (!type(QStringLiteral("alertTextField"), QStringLiteral("Tavo")))
        return fail(QStringLiteral("no field in the first-run prompt"));
    if (!stop("first-run-prompt") || !answerAlert("alertAction0"))
        return false;
    if (!waitFor([&] { return m_delegate->tabBarController() != nullptr; }))
        return fail(QStringLiteral("no tabs after saving the name"));

    TPTabBarController *tabs = m_delegate->tabBarController();
    TPNavigationStack *scriptsStack = tabs->tabs().at(0).stack;
    auto *scripts = qobject_cast<TPScriptsListVC *>(scriptsStack->topViewController());
    if (!waitFor([&] { return scripts->rows()->rowCount() > 0; }))
        return fail(QStringLiteral("the root list stayed empty"));
    if (!stop("scripts") || !touchRow(scripts, "games"))
        return false;

    auto *games = qobject_cast<TPScriptsListVC *>(scriptsStack->topViewController());
    if (!games || !waitFor([&] { return games->rows()->rowCount() > 0; }))
        return fail(QStringLiteral("the games folder did not open"));
    if (!stop("folder") || !goBack())
        return false;

    // A script's outline, in lib/util.lua.
    settle(m_window);
    if (!touchRow(scripts, "lib"))
        return false;
    auto *lib = qobject_cast<TPScriptsListVC *>(scriptsStack->topViewController());
    if (!lib || !waitFor([&] { return rowOfPath(lib, QStringLiteral("lib/util.lua")) >= 0; }))
        return fail(QStringLiteral("the lib folder did not open"));
    settle(m_window);
    if (!touchRow(lib, "lib/util.lua"))
        return false;
    auto *util = qobject_cast<TPEditorVC *>(scriptsStack->topViewController());
    if (!util || !waitFor([&] { return !util->text().isEmpty(); }))
        return fail(QStringLiteral("the editor did not show lib/util.lua"));
    settle(m_window);
    if (!touch(QStringLiteral("outlineButton")) || !stop("editor-outline") ||
        !touch(QStringLiteral("outlineRow1")) || !goBack() || !goBack())
        return false;

    // Where a file can move: the row menu's Move….
    settle(m_window);
    const int mainRow = rowOfPath(scripts, QStringLiteral("main.lua"));
    if (!touch(QStringLiteral("rowButton_more_%1").arg(mainRow)))
        return false;
    settle(m_window);
    if (!touch(QStringLiteral("sheetAction2")))
        return false;
    auto *picker = qobject_cast<TPFolderPickerVC *>(scriptsStack->topViewController());
    if (!picker || !waitFor([&] { return picker->rows()->rowCount() > 1; }))
        return fail(QStringLiteral("the folder picker listed no folder"));
    if (!stop("move-picker") || !goBack())
        return false;

    // Quick open: the file opened last, then a few letters typed.
    settle(m_window);
    if (!touch(QStringLiteral("quickOpenButton")))
        return false;
    auto *quickOpen = qobject_cast<TPQuickOpenVC *>(scriptsStack->topViewController());
    if (!quickOpen ||
        !waitFor([&] { return !quickOpen->loading() && quickOpen->rows()->rowCount() > 0; }))
        return fail(QStringLiteral("quick open showed no recent file"));
    if (!stop("quick-open-recent") || !type(QStringLiteral("quickOpenField"), QStringLiteral("hv")))
        return false;
    if (!waitFor([&] { return quickOpen->shownQuery() == QLatin1String("hv"); }))
        return fail(QStringLiteral("quick open showed nothing for what was typed"));
    if (!stop("quick-open") || !goBack())
        return false;

    // The search in all files: a few letters, and the lines of every file that has them.
    settle(m_window);
    if (!touch(QStringLiteral("searchFilesButton")))
        return false;
    auto *search = qobject_cast<TPSearchVC *>(scriptsStack->topViewController());
    settle(m_window);
    if (!search || !type(QStringLiteral("searchInFilesField"), QStringLiteral("tap(")))
        return fail(QStringLiteral("the search in all files did not open"));
    if (!waitFor([&] {
            return !search->reading() && search->shownSearch().pattern() == QLatin1String("tap(") &&
                   search->shownMatchCount() > 0;
        }))
        return fail(QStringLiteral("the search in all files found nothing: ") + search->query() +
                    u' ' + search->status());
    if (!stop("search-files") || !goBack())
        return false;

    if (!touch(QStringLiteral("addButton")) || !stop("add-sheet") ||
        !touch(QStringLiteral("sheetAction1")))
        return false;
    if (!waitFor([&] { return presenter->current() != nullptr; }) || !stop("new-folder-prompt"))
        return fail(QStringLiteral("no new-folder prompt"));
    if (!type(QStringLiteral("alertTextField"), QStringLiteral("new tools")) ||
        !answerAlert("alertAction1"))
        return false;
    if (!waitFor([&] { return rowOfPath(scripts, QStringLiteral("new_tools")) >= 0; }))
        return fail(QStringLiteral("the new folder did not appear"));

    // Deleting it from its row menu, and the bar that brings it back.
    settle(m_window);
    if (!touch(QStringLiteral("rowButton_more_%1")
                   .arg(rowOfPath(scripts, QStringLiteral("new_tools")))))
        return false;
    settle(m_window);
    if (!touch(QStringLiteral("sheetAction1")))
        return false;
    if (!waitFor([&] {
            return scripts->undoBar()->isShown() &&
                   rowOfPath(scripts, QStringLiteral("new_tools")) < 0;
        }))
        return fail(QStringLiteral("deleting the new folder offered no undo"));
    if (!stop("scripts-undo-delete") || !touch(QStringLiteral("undoBarButton")))
        return false;
    if (!waitFor([&] { return rowOfPath(scripts, QStringLiteral("new_tools")) >= 0; }))
        return fail(QStringLiteral("the undo did not bring the new folder back"));

    settle(m_window);
    if (!touchRow(scripts, "main.lua"))
        return false;
    auto *editor = qobject_cast<TPEditorVC *>(scriptsStack->topViewController());
    if (!editor || !waitFor([&] { return !editor->text().isEmpty(); }))
        return fail(QStringLiteral("the editor did not show main.lua"));
    if (!stop("editor") || !touch(QStringLiteral("findButton")) || !stop("editor-find") ||
        !touch(QStringLiteral("findButton")) || !touch(QStringLiteral("saveButton")))
        return false;
    if (!waitFor([&] { return presenter->current() != nullptr; }))
        return fail(QStringLiteral("saving showed no alert"));
    if (!stop("alert") || !answerAlert("alertAction0"))
        return false;
    if (!touch(QStringLiteral("runButton")) || !answerAlert("alertAction0"))
        return false;

    // Typing, then the versions read and saved, and one of them: its text, and how it
    // differs from the text typed since.
    if (!type(QStringLiteral("editor"), QStringLiteral("x")) ||
        !touch(QStringLiteral("historyButton")))
        return false;
    auto *versions = qobject_cast<TPHistoryVC *>(scriptsStack->topViewController());
    if (!versions || !waitFor([&] { return versions->rows()->rowCount() > 0; }))
        return fail(QStringLiteral("the editor's history listed no version"));
    if (!stop("history-versions") || !touch(QStringLiteral("historyRow0")))
        return false;
    auto *version = qobject_cast<TPVersionVC *>(scriptsStack->topViewController());
    if (!version || !waitFor([&] { return !version->loading(); }))
        return fail(QStringLiteral("the version did not show"));
    if (!stop("history-version") || !touch(QStringLiteral("segment1")) ||
        !stop("history-version-changes") || !goBack() || !goBack())
        return false;

    // Leaving without saving: the text is kept as a draft and offered when the file is
    // opened again.
    if (!goBack())
        return false;
    settle(m_window);
    if (!touchRow(scripts, "main.lua"))
        return false;
    auto *reopened = qobject_cast<TPEditorVC *>(scriptsStack->topViewController());
    if (!reopened || !waitFor([&] { return reopened->notice()->shown(); }))
        return fail(QStringLiteral("the kept draft was not offered"));
    if (!stop("editor-draft") || !touch(QStringLiteral("notice_discard")) || !goBack())
        return false;

    settle(m_window);
    if (!touch(QStringLiteral("historyButton")))
        return false;
    auto *files = qobject_cast<TPHistoryVC *>(scriptsStack->topViewController());
    if (!files || !waitFor([&] { return files->rows()->rowCount() > 0 && !files->loading(); }))
        return fail(QStringLiteral("the history listed no file"));
    if (!stop("history-files") || !goBack())
        return false;

    settle(m_window);
    if (!touchRow(scripts, "tools"))
        return false;
    auto *tools = qobject_cast<TPScriptsListVC *>(scriptsStack->topViewController());
    if (!tools ||
        !waitFor([&] { return rowOfPath(tools, QStringLiteral("tools/broken.lua")) >= 0; }))
        return fail(QStringLiteral("the tools folder did not open"));
    settle(m_window);
    if (!touchRow(tools, "tools/broken.lua"))
        return false;
    auto *broken = qobject_cast<TPEditorVC *>(scriptsStack->topViewController());
    if (!broken || !waitFor([&] { return broken->code()->syntaxErrorLine() > 0; }))
        return fail(QStringLiteral("the editor marked no syntax error in tools/broken.lua"));
    if (!stop("editor-syntax-error") || !goBack() || !goBack())
        return false;

    if (!touch(QStringLiteral("tab1")) || !stop("store"))
        return false;
    if (!touch(QStringLiteral("tab2")) || !stop("settings"))
        return false;
    if (!touch(QStringLiteral("switch4")) || !stop("settings-touch-debug"))
        return false;
    const QString language = TPCurrentLang();
    const QString otherLanguage =
        language == QLatin1String("en") ? QStringLiteral("segment0") : QStringLiteral("segment1");
    if (!touch(otherLanguage))
        return false;
    if (!waitFor([&] { return TPCurrentLang() != language; }))
        return fail(QStringLiteral("the language did not change"));
    settle(m_window);
    if (!touch(QStringLiteral("switch4")) || !stop("settings-other-language"))
        return false;
    if (!touch(QStringLiteral("tab0")))
        return false;
    return stop("scripts-again");
}
