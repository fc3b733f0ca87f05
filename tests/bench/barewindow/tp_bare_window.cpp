// A bare Qt Quick Controls window, the start-up benchmark's reference: the app's own start
// is compared with what any window in the same style costs. Built a second time with
// libcurl loaded and set up before the window, as the app's engine client has it.
#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQuickStyle>
#include <QtQml/qqmlextensionplugin.h>

#ifdef TP_BARE_WINDOW_WITH_LIBCURL
#include <curl/curl.h>
#endif

Q_IMPORT_QML_PLUGIN(TPBareWindowPlugin)

int main(int argc, char *argv[])
{
#ifdef TP_BARE_WINDOW_WITH_LIBCURL
    // What the engine client does before its first request.
    if (curl_global_init(CURL_GLOBAL_DEFAULT) != CURLE_OK)
        return 1;
#endif
    QGuiApplication app(argc, argv);
    QQuickStyle::setStyle(QStringLiteral("Basic"));
    QQmlApplicationEngine engine;
    engine.load(QUrl(QStringLiteral("qrc:/TPBareWindow/BareWindow.qml")));
    if (engine.rootObjects().isEmpty())
        return 1;
    return QGuiApplication::exec();
}
