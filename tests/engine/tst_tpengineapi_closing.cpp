// The application ends while 50 requests wait on an engine that never answers: six hold a
// connection, the rest wait inside the stack for one. Each connection ends at once, not at
// its 5 s limit, no completion runs, and the session's worker thread is gone. The
// sanitizer build checks that nothing leaks. A program of its own, since it ends its
// application object.
#include "engine/tpengineapi.h"
#include "tprawserver.h"

#include <QCoreApplication>
#include <QFile>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <memory>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kRequests = 50;

// The threads of this process, as the kernel counts them.
int threadCount()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith("Threads:"))
            return line.mid(8).trimmed().toInt();
    }
    return -1;
}

// Waits up to `ms` for `done`.
template <typename Done>
bool waitFor(Done done, int ms)
{
    const auto until = Clock::now() + std::chrono::milliseconds(ms);
    while (!done() && Clock::now() < until)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    return done();
}

} // namespace

int main(int argc, char *argv[])
{
    auto app = std::make_unique<QCoreApplication>(argc, argv);
    const int threadsBefore = threadCount();

    std::atomic<int> requestsSeen{0};
    std::atomic<int> endedByTheApp{0};
    std::atomic<Clock::rep> lastEnd{0};
    int calls = 0;
    {
        // An engine that reads each request and never answers.
        TPRawServer engine([&](TPRawConnection &connection) {
            if (connection.readRequest().isEmpty())
                return;
            ++requestsSeen;
            if (connection.drainUntilClosed(2 * TPEngineAPI::TimeoutMs)) {
                ++endedByTheApp;
                lastEnd = Clock::now().time_since_epoch().count();
            }
        });
        if (!engine.startAsTheEngine()) {
            std::fprintf(stderr, "FAIL: no loopback port for the engine\n");
            return 1;
        }
        // No exchange can time out before this moment plus the limit: a connection that ends
        // earlier was ended by the closing.
        const auto firstRequest = Clock::now();
        for (int i = 0; i < kRequests; ++i) {
            TPEngineAPI::requestMethod(QStringLiteral("GET"), QStringLiteral("/script"),
                                       QStringLiteral("name=%1.lua").arg(i), std::nullopt,
                                       [&calls](const std::optional<QByteArray> &, int,
                                                const TPEngineAPI::Error &) { ++calls; });
        }
        const int connections = int(TPEngineSession::MaxConnections);
        if (!waitFor([&] { return requestsSeen == connections; }, 4000)) {
            std::fprintf(stderr, "FAIL: the engine saw %d requests, not %d\n", int(requestsSeen),
                         connections);
            return 1;
        }

        const auto closing = Clock::now();
        app.reset();
        // Every connection ends with the closing, before the first exchange's limit could
        // have ended any of them.
        waitFor([&] { return endedByTheApp == connections; }, 2 * TPEngineAPI::TimeoutMs);
        const auto endedMs = std::chrono::duration_cast<std::chrono::milliseconds>(
                                 Clock::duration(lastEnd.load()) - closing.time_since_epoch())
                                 .count();
        const auto limitMs =
            std::chrono::duration_cast<std::chrono::milliseconds>(firstRequest - closing).count() +
            TPEngineAPI::TimeoutMs;
        const bool allEnded =
            endedByTheApp == connections && engine.connectionsAccepted() == connections;
        if (!allEnded || endedMs >= limitMs) {
            std::fprintf(stderr,
                         "FAIL: %d of %d connections ended, the last %lld ms after the "
                         "application\n",
                         int(endedByTheApp), engine.connectionsAccepted(),
                         static_cast<long long>(endedMs));
            return 1;
        }
    }
    // The engine's threads are joined; only the session's could still be there.
    const int threadsAfter = threadCount();
    const bool passed = calls == 0 && threadsAfter == threadsBefore;
    std::fprintf(stderr,
                 "%s: %d requests in flight at the close, completions=%d, threads %d "
                 "before and %d after\n",
                 passed ? "PASS" : "FAIL", kRequests, calls, threadsBefore, threadsAfter);
    return passed ? 0 : 1;
}
