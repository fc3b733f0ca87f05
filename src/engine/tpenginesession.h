#pragma once

#include "engine/tperror.h"

#include <QByteArray>
#include <QString>

#include <functional>
#include <memory>
#include <mutex>
#include <optional>

// The engine client's one HTTP session, on libcurl's multi interface: every exchange with
// the engine runs on one worker thread that the session owns, over at most
// MaxConnections connections to the engine at once. Further requests wait inside libcurl
// for a connection, in call order. Each exchange is bounded by the idle limit and the
// whole-request limit. When the application object goes away, exchanges still running are
// stopped and deliver nothing, and the worker thread ends.
//
// Transport failures are libcurl's own: domain "libcurl", the CURLcode, and
// curl_easy_strerror's text followed by libcurl's detail for that exchange.
class TPEngineSession
{
public:
    static constexpr auto ErrorDomain = "libcurl";
    // Connections to the engine at once, as the platform's own session keeps per host.
    static constexpr long MaxConnections = 6;
    // An answer larger than this ends in a transport error instead of exhausting memory.
    static constexpr qint64 MaxBodyBytes = qint64(512) * 1024 * 1024;

    struct Request
    {
        QByteArray origin; // "http://host:port", where the connection goes
        QByteArray target; // the request target exactly as it goes on the wire
        QByteArray method;
        std::optional<QByteArray> body; // none: no body and no Content-Length
        QString logName;                // the method and target, for the log
    };
    // Called with the body received so far, each time more of it arrives, and once more
    // with `complete` when it is whole; never again after a failure. Calls never overlap
    // and all run on the session's worker thread, never on the main thread.
    using BodyReader = std::function<void(const QByteArray &received, bool complete)>;
    // Called once with what the exchange gave: the body and status of a whole answer, or
    // the transport error (and the status when a head came). It runs on the worker thread,
    // or on the calling thread when the exchange could not be handed to one.
    using Delivery =
        std::function<void(std::optional<QByteArray> body, int status, std::optional<TPError>)>;

    // The session, created on the first call whichever thread makes it.
    static TPEngineSession *shared();
    // Sets libcurl up as the session needs it (plain HTTP, no TLS), once per process. The
    // session's worker thread does so as it starts, off the thread that made the first
    // request; start-up measurements call it to make the same floor.
    static void setUpLibcurl();

    // Hands the exchange to the worker thread; the limits run from now. Without a worker
    // thread (none could be made) the delivery gets a transport error at once.
    void start(Request request, BodyReader reader, Delivery delivery);

    TPEngineSession(const TPEngineSession &) = delete;
    TPEngineSession &operator=(const TPEngineSession &) = delete;

private:
    class Transfer;
    class Worker;

    TPEngineSession();
    // Stops every exchange and waits for the worker thread to end.
    void close();
    // The worker, made on first need with the mutex held; false, with `why`, when it could
    // not be made (no thread to spare), so that a later exchange tries again.
    bool ensureWorker(QByteArray &why);

    std::mutex m_mutex;
    bool m_closing = false;
    std::unique_ptr<Worker> m_worker;
};
