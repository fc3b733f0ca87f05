// The application ends while a request waits on an engine that never answers: the request
// lets go of its connection at once, not at its 5 s limit, and its completion never runs.
// A program of its own, since it ends its application object.
#include "tpengineapi.h"
#include "tploopbacklistener.h"
#include "tptestutil.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <poll.h>
#include <unistd.h>

#include <cstdio>
#include <memory>

namespace {

// Waits up to `ms` for `fd` to be readable.
bool readable(int fd, int ms)
{
    pollfd watched{fd, POLLIN, 0};
    return ::poll(&watched, 1, ms) == 1;
}

} // namespace

int main(int argc, char *argv[])
{
    auto app = std::make_unique<QCoreApplication>(argc, argv);
    // An engine that takes connections and never answers: a listening socket only.
    quint16 port = 0;
    const int listener = TPListenOnLoopback(port, 1);
    if (listener < 0) {
        std::fprintf(stderr, "FAIL: no loopback port for the engine\n");
        return 1;
    }
    TPPointEngineAPIAt(port);
    int calls = 0;
    TPEngineAPI::requestMethod(
        QStringLiteral("GET"), QStringLiteral("/scripts"), std::nullopt, std::nullopt,
        [&calls](const std::optional<QByteArray> &, int, const TPEngineAPI::Error &) { ++calls; });
    if (!readable(listener, 5000)) {
        std::fprintf(stderr, "FAIL: the request never reached the engine\n");
        return 1;
    }
    const int connection = ::accept(listener, nullptr, nullptr);

    QElapsedTimer clock;
    clock.start();
    app.reset();
    // The request was sent; after it, the connection must end well before the 5 s limit.
    bool ended = false;
    char bytes[4096];
    while (!ended && readable(connection, TPEngineAPI::TimeoutMs / 2)) {
        const ssize_t received = ::recv(connection, bytes, sizeof bytes, 0);
        ended = received <= 0;
    }
    const qint64 endedMs = clock.elapsed();
    ::close(connection);
    ::close(listener);

    const bool passed = ended && endedMs < TPEngineAPI::TimeoutMs / 2 && calls == 0;
    std::fprintf(stderr, "%s: the connection ended %lld ms after the application, completions=%d\n",
                 passed ? "PASS" : "FAIL", static_cast<long long>(endedMs), calls);
    return passed ? 0 : 1;
}
