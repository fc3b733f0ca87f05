// A bare Qt Quick Controls window, the start-up benchmark's reference: the app's own start
// is compared with what any window in the same style costs. Built a second time with
// libcurl loaded and set up before the window, as the app's engine client has it, and a
// third time as the floor of the app itself: every library the app loads, and libcurl set
// up by the engine client's own code on a thread of its own, as the app does before its
// first frame.
#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQuickStyle>
#include <QtQml/qqmlextensionplugin.h>

#ifdef TP_BARE_WINDOW_WITH_LIBCURL
#include <curl/curl.h>
#endif
#ifdef TP_BARE_WINDOW_AS_THE_APPS_FLOOR
#include "engine/tpenginesession.h"

#include <QSvgRenderer>
#include <git2.h>
#include <lua.hpp>
#include <simdjson.h>
#include <unicode/uversion.h>

#include <thread>

namespace {

// Something of each library the app links beyond this window's own, so that each is loaded
// at start as the app's are; none of them is set up before the app's first frame.
const void *const kLoaded[] = {reinterpret_cast<const void *>(&git_libgit2_version),
                               reinterpret_cast<const void *>(&luaL_newstate),
                               reinterpret_cast<const void *>(&simdjson::get_active_implementation),
                               reinterpret_cast<const void *>(&u_getVersion),
                               &QSvgRenderer::staticMetaObject};

} // namespace
#endif

Q_IMPORT_QML_PLUGIN(TPBareWindowPlugin)

int main(int argc, char *argv[])
{
#ifdef TP_BARE_WINDOW_WITH_LIBCURL
    // What the engine client does before its first request.
    if (curl_global_init(CURL_GLOBAL_DEFAULT) != CURLE_OK)
        return 1;
#endif
#ifdef TP_BARE_WINDOW_AS_THE_APPS_FLOOR
    for (const void *const loaded : kLoaded) {
        if (!loaded)
            return 1;
    }
    const std::jthread setUp(&TPEngineSession::setUpLibcurl);
#endif
    QGuiApplication app(argc, argv);
    QQuickStyle::setStyle(QStringLiteral("Basic"));
    QQmlApplicationEngine engine;
    engine.load(QUrl(QStringLiteral("qrc:/TPBareWindow/BareWindow.qml")));
    if (engine.rootObjects().isEmpty())
        return 1;
    return QGuiApplication::exec();
}
