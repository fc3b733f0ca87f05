// With no memory for another thread's stack, the session cannot make its worker thread:
// the request's completion still runs, once, on the main thread, with libcurl's
// initialisation error. Once a thread can be had again, the next request goes through.
// A program of its own, since it limits the whole process's address space, which the
// sanitizers' shadow memory cannot live with (there it reports itself skipped).
#include "engine/tpengineapi.h"
#include "tprecordingengine.h"

#include <QCoreApplication>
#include <QFile>
#include <QTimer>

#include <curl/curl.h>
#include <sys/resource.h>

#include <cstdio>
#include <thread>

namespace {

constexpr int kSkipped = 77;

// The process's address space in bytes, as the kernel counts it.
rlim_t addressSpaceBytes()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith("VmSize:"))
            return rlim_t(line.mid(7).trimmed().split(' ').first().toULongLong()) * 1024;
    }
    return 0;
}

struct Delivered
{
    int calls = 0;
    bool onMainThread = false;
    int status = -1;
    TPEngineAPI::Error error;
};

void request(Delivered &delivered, QCoreApplication &app)
{
    const std::thread::id mainThread = std::this_thread::get_id();
    TPEngineAPI::requestMethod(
        QStringLiteral("GET"), QStringLiteral("/scripts"), std::nullopt, std::nullopt,
        [&delivered, &app, mainThread](const std::optional<QByteArray> &, int status,
                                       const TPEngineAPI::Error &error) {
            ++delivered.calls;
            delivered.onMainThread = std::this_thread::get_id() == mainThread;
            delivered.status = status;
            delivered.error = error;
            app.quit();
        });
}

} // namespace

int main(int argc, char *argv[])
{
#if defined(__SANITIZE_ADDRESS__)
    std::fprintf(stderr, "SKIP: the address space cannot be limited under AddressSanitizer\n");
    return kSkipped;
#endif
    QCoreApplication app(argc, argv);
    TPRecordingEngine engine;
    if (!engine.startAsTheEngine()) {
        std::fprintf(stderr, "FAIL: no loopback port for the engine\n");
        return 1;
    }

    // Room for small allocations, but not for a thread's stack (8 MB by default).
    rlimit previous{};
    getrlimit(RLIMIT_AS, &previous);
    const rlimit tight{addressSpaceBytes() + 2 * 1024 * 1024, previous.rlim_max};
    if (setrlimit(RLIMIT_AS, &tight) != 0) {
        std::fprintf(stderr, "FAIL: the address space could not be limited\n");
        return 1;
    }
    Delivered refused;
    request(refused, app);
    setrlimit(RLIMIT_AS, &previous);
    QTimer::singleShot(10000, &app, &QCoreApplication::quit);
    app.exec();

    Delivered answered;
    request(answered, app);
    app.exec();

    const bool passed = refused.calls == 1 && refused.onMainThread && refused.status == 0 &&
                        refused.error && refused.error->domain == QLatin1String("libcurl") &&
                        refused.error->code == CURLE_FAILED_INIT &&
                        refused.error->localizedDescription.contains(QLatin1String("thread")) &&
                        answered.calls == 1 && answered.status == 200 && !answered.error &&
                        engine.requests().size() == 1;
    std::fprintf(stderr,
                 "%s: without a thread: calls=%d status=%d error=%s; then: calls=%d "
                 "status=%d\n",
                 passed ? "PASS" : "FAIL", refused.calls, refused.status,
                 refused.error ? qPrintable(refused.error->localizedDescription) : "-",
                 answered.calls, answered.status);
    return passed ? 0 : 1;
}
