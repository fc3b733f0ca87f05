#include "tpenginesession.h"

#include "tpengineapi.h"
#include "tphttpanswer.h"
#include "tplog.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <memory>
#include <system_error>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;

// A body from this size on is read while it arrives on a thread of its own.
constexpr qsizetype kConcurrentReadBytes = 1024 * 1024;
// How much one receive may take from the socket.
constexpr size_t kReceiveBytes = 256 * 1024;

#ifdef MSG_NOSIGNAL
constexpr int kSendFlags = MSG_NOSIGNAL;
#else
constexpr int kSendFlags = 0; // SO_NOSIGPIPE is set on the socket instead
#endif

TPError posixError(int code)
{
    return {QString::fromLatin1(TPEngineSession::ErrorDomain), code, qt_error_string(code)};
}

// The two limits of one exchange: the idle limit restarts whenever bytes move, the whole
// limit runs from the start. Waits round up, so that no limit ends before its full time.
class Limits
{
public:
    Limits()
        : m_whole(Clock::now() + std::chrono::milliseconds(TPEngineAPI::TimeoutMs)), m_idle(m_whole)
    {}
    void bytesMoved() { m_idle = Clock::now() + std::chrono::milliseconds(TPEngineAPI::TimeoutMs); }
    // Milliseconds until the nearer limit; 0 or less once it has passed.
    int remainingMs() const
    {
        const auto left = std::min(m_whole, m_idle) - Clock::now();
        return left <= Clock::duration::zero()
                   ? 0
                   : int(std::chrono::ceil<std::chrono::milliseconds>(left).count());
    }

private:
    Clock::time_point m_whole;
    Clock::time_point m_idle;
};

// Owns a socket descriptor.
class Socket
{
public:
    explicit Socket(int fd) : m_fd(fd) {}
    ~Socket()
    {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    Socket(const Socket &) = delete;
    Socket &operator=(const Socket &) = delete;
    int fd() const { return m_fd; }

private:
    int m_fd;
};

// Runs a body reader on a thread of its own while the body is still being received, so
// that reading and receiving overlap. Only for a block that never moves while it fills:
// the reader is shown the bytes received so far in place, and never looks past them.
class ConcurrentReader
{
public:
    ConcurrentReader(const TPEngineSession::BodyReader &reader, const char *block)
        : m_reader(reader), m_block(block), m_thread([this] { run(); })
    {}
    ~ConcurrentReader()
    {
        {
            const std::lock_guard lock(m_mutex);
            m_ended = true;
        }
        m_changed.notify_one();
        m_thread.join();
    }
    ConcurrentReader(const ConcurrentReader &) = delete;
    ConcurrentReader &operator=(const ConcurrentReader &) = delete;

    // The first `size` bytes of the block are in and will not change.
    void received(qsizetype size)
    {
        {
            const std::lock_guard lock(m_mutex);
            m_received = size;
        }
        m_changed.notify_one();
    }

private:
    void run()
    {
        for (qsizetype read = 0;;) {
            std::unique_lock lock(m_mutex);
            m_changed.wait(lock, [&] { return m_ended || m_received > read; });
            const qsizetype received = m_received;
            const bool ended = m_ended;
            lock.unlock();
            if (received > read) {
                m_reader(QByteArray::fromRawData(m_block, received), false);
                read = received;
            } else if (ended) {
                return;
            }
        }
    }

    const TPEngineSession::BodyReader &m_reader;
    const char *const m_block;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    qsizetype m_received = 0;
    bool m_ended = false;
    std::thread m_thread;
};

// One exchange: connect, send the request, read the answer.
class Exchange
{
public:
    Exchange(const TPEngineSession::Request &request, int closingFd,
             const TPEngineSession::BodyReader &reader)
        : m_request(request), m_closingFd(closingFd), m_reader(reader)
    {}

    // The errno that ended the exchange, 0 when the answer came whole. ECANCELED when the
    // session closed.
    int run()
    {
        const int connectError = connectSocket();
        if (connectError)
            return connectError;
        // A server may answer and close before it has read the whole request; its answer
        // still counts, and the send failure only when no answer came.
        const int sendError = sendRequest();
        if (sendError == ECANCELED || sendError == ETIMEDOUT)
            return sendError;
        const int receiveError = receiveAnswer();
        // The reader has read all it was shown before the caller reads the whole body.
        m_concurrentReader.reset();
        if (receiveError)
            return receiveError;
        if (m_answer.state() == TPHttpAnswer::State::Complete)
            return 0;
        return sendError ? sendError : m_cutOff ? ECONNRESET : EPROTO;
    }

    const TPHttpAnswer &answer() const { return m_answer; }

private:
    // Waits until the socket is ready for `events`: 0, ETIMEDOUT, ECANCELED or errno.
    int waitFor(short events)
    {
        for (;;) {
            const int timeout = m_limits.remainingMs();
            if (timeout <= 0)
                return ETIMEDOUT;
            pollfd watched[2] = {{m_socket->fd(), events, 0}, {m_closingFd, POLLIN, 0}};
            const int ready = ::poll(watched, 2, timeout);
            if (ready < 0 && errno != EINTR)
                return errno;
            if (ready > 0 && watched[1].revents)
                return ECANCELED;
            if (ready > 0)
                return 0;
        }
    }

    int connectSocket()
    {
        sockaddr_storage address{};
        socklen_t length = 0;
        auto *ipv4 = reinterpret_cast<sockaddr_in *>(&address);
        auto *ipv6 = reinterpret_cast<sockaddr_in6 *>(&address);
        if (::inet_pton(AF_INET, m_request.address.constData(), &ipv4->sin_addr) == 1) {
            ipv4->sin_family = AF_INET;
            ipv4->sin_port = htons(m_request.port);
            length = sizeof *ipv4;
        } else if (::inet_pton(AF_INET6, m_request.address.constData(), &ipv6->sin6_addr) == 1) {
            ipv6->sin6_family = AF_INET6;
            ipv6->sin6_port = htons(m_request.port);
            length = sizeof *ipv6;
        } else {
            return EADDRNOTAVAIL;
        }
        m_socket = std::make_unique<Socket>(::socket(address.ss_family, SOCK_STREAM, 0));
        const int fd = m_socket->fd();
        if (fd < 0)
            return errno;
        const int on = 1;
        ::fcntl(fd, F_SETFD, FD_CLOEXEC);
        ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) | O_NONBLOCK);
        ::setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
#ifdef SO_NOSIGPIPE
        ::setsockopt(fd, SOL_SOCKET, SO_NOSIGPIPE, &on, sizeof on);
#endif
        if (::connect(fd, reinterpret_cast<sockaddr *>(&address), length) == 0)
            return 0;
        if (errno != EINPROGRESS)
            return errno;
        if (const int waited = waitFor(POLLOUT))
            return waited;
        int error = 0;
        socklen_t size = sizeof error;
        if (::getsockopt(fd, SOL_SOCKET, SO_ERROR, &error, &size) < 0)
            return errno;
        return error;
    }

    int sendRequest()
    {
        const QByteArray &bytes = m_request.bytes;
        for (qsizetype sent = 0; sent < bytes.size();) {
            const ssize_t written = ::send(m_socket->fd(), bytes.constData() + sent,
                                           size_t(bytes.size() - sent), kSendFlags);
            if (written > 0) {
                sent += written;
                m_limits.bytesMoved();
            } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
                if (const int waited = waitFor(POLLOUT))
                    return waited;
            } else if (errno != EINTR) {
                return errno;
            }
        }
        return 0;
    }

    int receiveAnswer()
    {
        const auto buffer = std::make_unique<char[]>(kReceiveBytes);
        for (;;) {
            // A body of known length is received straight into its block.
            qsizetype room = 0;
            char *const direct = m_answer.directSpace(room);
            const ssize_t received = direct
                                         ? ::recv(m_socket->fd(), direct, size_t(room), 0)
                                         : ::recv(m_socket->fd(), buffer.get(), kReceiveBytes, 0);
            if (direct)
                m_answer.directWritten(std::max<ssize_t>(received, 0));
            if (received > 0) {
                m_limits.bytesMoved();
                if (!direct)
                    m_answer.received(buffer.get(), received);
                if (m_answer.state() != TPHttpAnswer::State::Body)
                    return 0;
                if (m_reader)
                    handToReader();
            } else if (received == 0) {
                m_answer.closed();
                m_cutOff = m_answer.state() != TPHttpAnswer::State::Complete;
                return 0;
            } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
                if (const int waited = waitFor(POLLIN))
                    return waited;
            } else if (errno != EINTR) {
                return errno;
            }
        }
    }

    // A large body whose block never moves is read on a thread of its own while it arrives;
    // any other is read here between receives.
    void handToReader()
    {
        const qsizetype length = m_answer.fixedBodyLength();
        if (!m_concurrentReader && !m_readsHere && length >= kConcurrentReadBytes) {
            try {
                m_concurrentReader =
                    std::make_unique<ConcurrentReader>(m_reader, m_answer.body().constData());
            } catch (const std::system_error &) {
                // No thread to spare: the body is read here instead.
                m_readsHere = true;
            }
        }
        if (m_concurrentReader)
            m_concurrentReader->received(m_answer.body().size());
        else
            m_reader(m_answer.body(), false);
    }

    const TPEngineSession::Request &m_request;
    const int m_closingFd;
    const TPEngineSession::BodyReader &m_reader;
    Limits m_limits;
    std::unique_ptr<Socket> m_socket;
    TPHttpAnswer m_answer;
    std::unique_ptr<ConcurrentReader> m_concurrentReader;
    bool m_readsHere = false;
    bool m_cutOff = false;
};

} // namespace

TPEngineSession::TPEngineSession()
{
    if (::pipe(m_closingPipe) == 0) {
        ::fcntl(m_closingPipe[0], F_SETFD, FD_CLOEXEC);
        ::fcntl(m_closingPipe[1], F_SETFD, FD_CLOEXEC);
    }
}

TPEngineSession *TPEngineSession::shared()
{
    // Made once, whichever thread asks first, and never destroyed: exchanges may still be
    // finishing while static objects go away. It closes with the application object.
    static TPEngineSession *const session = [] {
        auto *made = new TPEngineSession;
        qAddPostRoutine([] { shared()->close(); });
        return made;
    }();
    return session;
}

void TPEngineSession::start(Request request, BodyReader reader, Delivery delivery)
{
    {
        const std::lock_guard lock(m_mutex);
        if (m_closing)
            return;
        ++m_running;
    }
    try {
        std::thread([this, request = std::move(request), reader = std::move(reader),
                     delivery = std::move(delivery)]() mutable {
            run(request, reader, delivery);
            // Whatever the caller gave is let go of here, before the session hears that
            // this exchange is done.
            reader = nullptr;
            delivery = nullptr;
            const std::lock_guard lock(m_mutex);
            --m_running;
            m_allDone.notify_all();
        }).detach();
    } catch (const std::system_error &error) {
        qCWarning(tpEngineLog).noquote()
            << request.logName << "no thread for the exchange:" << error.what();
        {
            const std::lock_guard lock(m_mutex);
            --m_running;
        }
        delivery(std::nullopt, 0, posixError(EAGAIN));
    }
}

void TPEngineSession::run(const Request &request, const BodyReader &reader,
                          const Delivery &delivery)
{
    QElapsedTimer clock;
    clock.start();
    Exchange exchange(request, m_closingPipe[0], reader);
    const int error = exchange.run();
    if (error == ECANCELED)
        return;
    const TPHttpAnswer &answer = exchange.answer();
    const int status = answer.status();
    if (!error && reader)
        reader(answer.body(), true);
    qCInfo(tpEngineLog).noquote() << request.logName << "status" << status << "ms"
                                  << clock.elapsed() << "error"
                                  << (error ? qt_error_string(error) : QStringLiteral("-"));
    // Delivered under the lock, so that nothing is handed on once the session has closed.
    const std::lock_guard lock(m_mutex);
    if (m_closing)
        return;
    if (error)
        delivery(std::nullopt, status, posixError(error));
    else
        delivery(answer.body(), status, std::nullopt);
}

void TPEngineSession::close()
{
    std::unique_lock lock(m_mutex);
    m_closing = true;
    if (m_closingPipe[1] >= 0) {
        const char wake = 0;
        while (::write(m_closingPipe[1], &wake, 1) < 0 && errno == EINTR) {
        }
    }
    m_allDone.wait(lock, [this] { return m_running == 0; });
}
