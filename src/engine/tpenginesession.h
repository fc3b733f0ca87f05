#pragma once

#include "tperror.h"

#include <QByteArray>
#include <QString>

#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>

// The engine client's one HTTP session: it runs each exchange with the engine on a thread
// of its own, over a plain loopback socket, and bounds it by the idle limit and the
// whole-request limit. An exchange reads the answer straight into one block, and a caller
// may read the body while it arrives, so that a large answer is decoded as it comes
// instead of after it. When the application object goes away, exchanges still running are
// stopped and deliver nothing.
//
// Transport failures are the socket's own: domain "POSIX", the errno code and the system's
// message. An answer cut off before its end is ECONNRESET, one that is not HTTP is EPROTO,
// and a limit reached is ETIMEDOUT.
class TPEngineSession
{
public:
    static constexpr auto ErrorDomain = "POSIX";

    struct Request
    {
        QByteArray address; // a numeric IPv4 or IPv6 address
        quint16 port = 0;
        QByteArray bytes; // the whole request as it goes on the wire
        QString logName;  // the method and target, for the log
    };
    // Called with the body received so far, each time more of it arrives, and once more
    // with `complete` when it is whole; never again after a failure. Calls never overlap
    // and never run on the main thread: they run on the exchange's thread, except that a
    // large body of known length is read on one more thread of its own while the exchange
    // goes on receiving. The last call is on the exchange's thread.
    using BodyReader = std::function<void(const QByteArray &received, bool complete)>;
    // Called on the exchange's thread, once, with what the exchange gave: the body and
    // status of a whole answer, or the transport error (and the status when a head came).
    using Delivery =
        std::function<void(std::optional<QByteArray> body, int status, std::optional<TPError>)>;

    // The session, created on the first call whichever thread makes it.
    static TPEngineSession *shared();

    // Starts the exchange at once on a new thread; the limits run from now.
    void start(Request request, BodyReader reader, Delivery delivery);

    TPEngineSession(const TPEngineSession &) = delete;
    TPEngineSession &operator=(const TPEngineSession &) = delete;

private:
    TPEngineSession();
    void run(const Request &request, const BodyReader &reader, const Delivery &delivery);
    // Stops every running exchange and waits for their threads to let go of the session.
    void close();

    std::mutex m_mutex;
    std::condition_variable m_allDone;
    int m_running = 0;
    bool m_closing = false;
    // Becomes readable when the session closes, waking every exchange's wait.
    int m_closingPipe[2] = {-1, -1};
};
