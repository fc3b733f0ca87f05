// Renders every screen of the app, in Vietnamese and in English, to PNG files: the pictures
// in the README. Runs on the offscreen platform against a development engine serving the
// sample scripts from a temporary folder; nothing outside that folder is touched.
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

#include <QDir>
#include <QDirIterator>
#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQuickStyle>
#include <QQuickWindow>
#include <QSettings>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QtQml/qqmlextensionplugin.h>

#include <arpa/inet.h>
#include <netinet/in.h>

Q_IMPORT_QML_PLUGIN(TPCompanionPlugin)

namespace {

bool copyFolder(const QString &relativeFrom, const QString &to)
{
    const QString from = QDir(relativeFrom).absolutePath();
    QDirIterator it(from, QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString source = it.next();
        const QString target = to + u'/' + QDir(from).relativeFilePath(source);
        if (it.fileInfo().isDir())
            continue;
        if (!QDir().mkpath(QFileInfo(target).path()) || !QFile::copy(source, target))
            return false;
    }
    return true;
}

// A Wi-Fi address to show, so the connection rows look as they do on a phone.
std::optional<QList<TPInterfaceEntry>> sampleInterfaces()
{
    in_addr address{};
    inet_pton(AF_INET, "192.168.1.23", &address);
    return QList<TPInterfaceEntry>{
        {"en0", true, AF_INET,
         QByteArray(reinterpret_cast<const char *>(&address), sizeof address)}};
}

class Shooter
{
public:
    Shooter(const QString &outputFolder, const QString &language)
        : m_output(outputFolder), m_language(language)
    {}

    bool shoot(QQuickWindow *window, const QString &name)
    {
        settle();
        const QImage image = window->grabWindow();
        const QString path = QStringLiteral("%1/%2-%3.png").arg(m_output, m_language, name);
        if (image.isNull() || !image.save(path)) {
            qWarning("could not write %s", qPrintable(path));
            return false;
        }
        qInfo("wrote %s", qPrintable(path));
        return true;
    }

    // Lets animations and pending replies finish.
    static void settle() { QTest::qWait(700); }

private:
    QString m_output;
    QString m_language;
};

template <typename Condition>
bool waitFor(Condition condition)
{
    return QTest::qWaitFor(condition, 10000);
}

bool shootLanguage(const QString &language, const QString &output, const QString &ownerRoot)
{
    QSettings().clear();
    QSettings().setValue(QLatin1String(TPLangKey), language);
    QDir(ownerRoot).removeRecursively();
    TPSetOwnerFileLocations({ownerRoot, ownerRoot + QStringLiteral("/AppGroup")});

    AppDelegate delegate;
    QQmlApplicationEngine engine;
    engine.setInitialProperties({{QStringLiteral("app"), QVariant::fromValue(&delegate)}});
    engine.load(QUrl(QStringLiteral("qrc:/TPCompanion/Main.qml")));
    if (engine.rootObjects().isEmpty())
        return false;
    auto *window = qobject_cast<QQuickWindow *>(engine.rootObjects().first());
    Shooter shooter(output, language);
    delegate.didFinishLaunching();

    TPPresenter *presenter = delegate.presenter();
    bool ok = waitFor([&] { return presenter->current() != nullptr; });
    presenter->current()->setText(QStringLiteral("Tavo"));
    ok = ok && shooter.shoot(window, QStringLiteral("first-run-prompt"));
    presenter->current()->triggerAction(0);
    ok = ok && waitFor([&] { return delegate.tabBarController() != nullptr; });

    TPTabBarController *tabs = delegate.tabBarController();
    auto *scripts = qobject_cast<TPScriptsListVC *>(tabs->tabs().at(0).stack->topViewController());
    ok = ok && waitFor([&] { return scripts->rows().size() > 0; });
    ok = ok && shooter.shoot(window, QStringLiteral("scripts"));

    scripts->onAddTapped();
    ok = ok && shooter.shoot(window, QStringLiteral("add-sheet"));
    presenter->current()->dismissByCancel();

    int mainRow = -1;
    for (int row = 0; row < scripts->rows().size(); ++row) {
        if (scripts->rows().at(row).toObject().value(QStringLiteral("path")).toString() ==
            QLatin1String("main.lua"))
            mainRow = row;
    }
    scripts->didSelectRow(mainRow);
    TPNavigationStack *scriptsStack = tabs->tabs().at(0).stack;
    auto *editor = qobject_cast<TPEditorVC *>(scriptsStack->topViewController());
    ok = ok && editor && waitFor([&] { return !editor->text().isEmpty(); });
    ok = ok && shooter.shoot(window, QStringLiteral("editor"));

    editor->onSaveTapped();
    ok = ok && waitFor([&] { return presenter->current() != nullptr; });
    ok = ok && shooter.shoot(window, QStringLiteral("alert"));
    presenter->current()->triggerAction(0);
    scriptsStack->popViewController();

    tabs->setSelectedIndex(1);
    ok = ok && shooter.shoot(window, QStringLiteral("store"));

    tabs->setSelectedIndex(2);
    auto *settings = qobject_cast<TPSettingsVC *>(tabs->tabs().at(2).stack->topViewController());
    ok = ok && shooter.shoot(window, QStringLiteral("settings"));
    settings->onSwitchChanged(4, true);
    ok = ok && shooter.shoot(window, QStringLiteral("settings-touch-debug"));
    return ok;
}

} // namespace

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    QStandardPaths::setTestModeEnabled(true);
    QGuiApplication::setOrganizationName(QStringLiteral("TPCompanionScreenshots"));
    QGuiApplication::setApplicationName(QStringLiteral("screenshots"));
    QQuickStyle::setStyle(QStringLiteral("Basic"));

    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 3) {
        qWarning("usage: tp-screenshots SAMPLES_DIR OUTPUT_DIR");
        return 2;
    }
    QTemporaryDir work;
    const QString root = work.filePath(QStringLiteral("scripts"));
    if (!work.isValid() || !QDir().mkpath(root) || !copyFolder(arguments.at(1), root))
        return 1;
    QDir().mkpath(arguments.at(2));

    TPDevEngine engine(root);
    const quint16 port = engine.listen(0);
    if (port == 0)
        return 1;
    TPEngineAPI::setBaseAddressForTesting(QStringLiteral("http://127.0.0.1:%1").arg(port));
    TPSetInterfaceSource(sampleInterfaces);

    bool ok = true;
    for (const QString &language : {QStringLiteral("vi"), QStringLiteral("en")})
        ok = shootLanguage(language, arguments.at(2), work.filePath(QStringLiteral("owner"))) && ok;
    return ok ? 0 : 1;
}
