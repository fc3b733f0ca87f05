// The engine client's session is first asked for on another thread, before the
// application object exists; completions must still run on the main thread. A program of
// its own, since the session is made once per process.
#include "engine/tpengineapi.h"
#include "tprecordingengine.h"

#include <QCoreApplication>
#include <QThread>
#include <QTimer>

#include <cstdio>
#include <thread>

int main(int argc, char *argv[])
{
    TPEngineSession *session = nullptr;
    std::thread([&session] { session = TPEngineAPI::session(); }).join();
    // Compared by the standard library's id: asking Qt for the current thread here, before
    // the application object, would make Qt keep a record of this thread it never frees.
    const std::thread::id mainThread = std::this_thread::get_id();

    QCoreApplication app(argc, argv);
    TPRecordingEngine engine;
    if (!engine.startAsTheEngine()) {
        std::fprintf(stderr, "FAIL: no loopback port for the engine\n");
        return 1;
    }
    bool ranOnMainThread = false;
    int calls = 0;
    TPEngineAPI::requestMethod(
        QStringLiteral("GET"), QStringLiteral("/scripts"), std::nullopt, std::nullopt,
        [&](const std::optional<QByteArray> &, int status, const TPEngineAPI::Error &error) {
            ++calls;
            ranOnMainThread = std::this_thread::get_id() == mainThread && status == 200 && !error;
            app.quit();
        });
    QTimer::singleShot(10000, &app, &QCoreApplication::quit);
    app.exec();

    const bool passed = calls == 1 && ranOnMainThread && session == TPEngineAPI::session() &&
                        engine.requests().size() == 1;
    std::fprintf(stderr,
                 "%s: completion after a session made before the application: calls=%d "
                 "on main thread=%d\n",
                 passed ? "PASS" : "FAIL", calls, int(ranOnMainThread));
    return passed ? 0 : 1;
}
