#include "app/appdelegate.h"
#include "app/tpappidentity.h"
#include "app/tpappwindow.h"
#include "app/tpqmlmodules.h"
#include "foundation/tpownerfile.h"
#include "platform/tptheme.h"

#include <QCommandLineParser>
#include <QDir>
#include <QGuiApplication>
#include <QQmlEngine>
#include <QQuickStyle>

#include <cstdio>

int main(int argc, char *argv[])
{
    QGuiApplication app(argc, argv);
    TPApplyAppIdentity();
    QQuickStyle::setStyle(QStringLiteral("Basic"));

#ifndef Q_OS_IOS
    // On a desktop the device-name file can live elsewhere; the phone always uses its own.
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("The touch front end of the script engine."));
    parser.addHelpOption();
    const QCommandLineOption ownerRoot(
        QStringLiteral("owner-root"),
        QStringLiteral("Keep the device-name file under DIR instead of the jailbreak root "
                       "(for running on a desktop)."),
        QStringLiteral("DIR"));
    parser.addOption(ownerRoot);
    const QCommandLineOption appearance(
        QStringLiteral("appearance"),
        QStringLiteral("Show the light or dark appearance whatever the desktop's (light, dark "
                       "or auto)."),
        QStringLiteral("light|dark|auto"), QStringLiteral("auto"));
    parser.addOption(appearance);
    parser.process(app);
    const auto forced = TPTheme::appearanceNamed(parser.value(appearance));
    if (!forced) {
        std::fprintf(stderr, "--appearance takes light, dark or auto\n");
        return EXIT_FAILURE;
    }
    TPTheme::shared()->setAppearance(*forced);
    if (parser.isSet(ownerRoot)) {
        const QString root = QDir(parser.value(ownerRoot)).absolutePath();
        TPSetOwnerFileLocations({root, root + QStringLiteral("/AppGroup")});
    }
#endif

    AppDelegate delegate;
    QQmlEngine engine;
    const TPAppWindow window(engine, delegate);
    if (!window.window()) {
        std::fprintf(stderr, "%s\n", qPrintable(window.errorString()));
        return EXIT_FAILURE;
    }
#ifdef Q_OS_IOS
    // Maximised rather than full screen: the window then takes the screen's available
    // geometry, which keeps out of the notch, the status bar and the home indicator.
    window.window()->showMaximized();
#endif
    delegate.didFinishLaunching();
    return QGuiApplication::exec();
}
