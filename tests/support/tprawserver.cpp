#include "tprawserver.h"

#include "tploopbacklistener.h"
#include "tptestutil.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>

namespace {

// How long a blocking step of a script looks up before it checks whether the server stops.
constexpr int kStepMs = 50;

using Clock = std::chrono::steady_clock;

int msSince(Clock::time_point start)
{
    return int(std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count());
}

// The Content-Length a request head announces, 0 without one.
qsizetype announcedLength(const QByteArray &head)
{
    for (const QByteArray &line : head.split('\n')) {
        const qsizetype colon = line.indexOf(':');
        if (colon > 0 &&
            line.left(colon).trimmed().compare("content-length", Qt::CaseInsensitive) == 0)
            return line.mid(colon + 1).trimmed().toLongLong();
    }
    return 0;
}

} // namespace

bool TPRawConnection::waitReadable(int timeoutMs)
{
    const auto start = Clock::now();
    while (!m_stopping) {
        const int left = timeoutMs - msSince(start);
        if (left <= 0)
            return false;
        pollfd watched{m_fd, POLLIN, 0};
        if (::poll(&watched, 1, std::min(left, kStepMs)) > 0)
            return true;
    }
    return false;
}

QByteArray TPRawConnection::readRequest(int timeoutMs)
{
    const auto start = Clock::now();
    for (;;) {
        const qsizetype headEnd = m_buffer.indexOf("\r\n\r\n");
        if (headEnd >= 0) {
            const qsizetype whole = headEnd + 4 + announcedLength(m_buffer.left(headEnd));
            if (m_buffer.size() >= whole) {
                const QByteArray request = m_buffer.left(whole);
                m_buffer.remove(0, whole);
                m_recorder(request);
                return request;
            }
        }
        if (!waitReadable(timeoutMs - msSince(start)))
            return {};
        char chunk[65536];
        const ssize_t received = ::recv(m_fd, chunk, sizeof chunk, 0);
        if (received <= 0)
            return {};
        m_buffer.append(chunk, received);
    }
}

bool TPRawConnection::write(const QByteArray &bytes)
{
    for (qsizetype sent = 0; sent < bytes.size();) {
        if (m_stopping)
            return false;
        pollfd watched{m_fd, POLLOUT, 0};
        if (::poll(&watched, 1, kStepMs) <= 0)
            continue;
        const ssize_t written =
            ::send(m_fd, bytes.constData() + sent, size_t(bytes.size() - sent), MSG_NOSIGNAL);
        if (written <= 0)
            return false;
        sent += written;
    }
    return true;
}

bool TPRawConnection::writeInPieces(const QList<QByteArray> &pieces, int pauseMs)
{
    for (qsizetype i = 0; i < pieces.size(); ++i) {
        if (i > 0)
            pause(pauseMs);
        if (!write(pieces.at(i)))
            return false;
    }
    return true;
}

void TPRawConnection::pause(int ms)
{
    const auto start = Clock::now();
    while (!m_stopping && msSince(start) < ms)
        std::this_thread::sleep_for(std::chrono::milliseconds(std::min(ms - msSince(start), 10)));
}

bool TPRawConnection::drainUntilClosed(int timeoutMs)
{
    const auto start = Clock::now();
    for (;;) {
        if (!waitReadable(timeoutMs - msSince(start)))
            return false;
        char chunk[65536];
        if (::recv(m_fd, chunk, sizeof chunk, 0) <= 0)
            return true;
    }
}

void TPRawConnection::resetOnClose()
{
    const linger abortive{1, 0};
    ::setsockopt(m_fd, SOL_SOCKET, SO_LINGER, &abortive, sizeof abortive);
}

TPRawServer::TPRawServer(Script script) : m_script(std::move(script)) {}

TPRawServer::~TPRawServer()
{
    m_stopping = true;
    if (m_wakePipe[1] >= 0) {
        const char wake = 0;
        [[maybe_unused]] const ssize_t written = ::write(m_wakePipe[1], &wake, 1);
    }
    if (m_acceptor.joinable())
        m_acceptor.join();
    for (std::thread &connection : m_connections)
        connection.join();
    for (const int fd : {m_listener, m_wakePipe[0], m_wakePipe[1]}) {
        if (fd >= 0)
            ::close(fd);
    }
}

bool TPRawServer::startAsTheEngine()
{
    m_listener = TPListenOnLoopback(m_port, 128);
    if (m_listener < 0 || ::pipe(m_wakePipe) != 0)
        return false;
    TPPointEngineAPIAt(m_port);
    m_acceptor = std::thread([this] { acceptLoop(); });
    return true;
}

QList<QByteArray> TPRawServer::requests() const
{
    const std::lock_guard lock(m_mutex);
    return m_requests;
}

void TPRawServer::acceptLoop()
{
    for (;;) {
        pollfd watched[2] = {{m_listener, POLLIN, 0}, {m_wakePipe[0], POLLIN, 0}};
        if (::poll(watched, 2, -1) < 0 || watched[1].revents || m_stopping)
            return;
        const int fd = ::accept(m_listener, nullptr, nullptr);
        if (fd < 0)
            continue;
        ++m_accepted;
        const int open = ++m_open;
        int most = m_mostOpen;
        while (open > most && !m_mostOpen.compare_exchange_weak(most, open)) {
        }
        m_connections.emplace_back([this, fd] { serve(fd); });
    }
}

void TPRawServer::serve(int fd)
{
    TPRawConnection connection(fd, m_stopping, [this](const QByteArray &request) {
        const std::lock_guard lock(m_mutex);
        m_requests.append(request);
    });
    m_script(connection);
    // Counted as closed before the peer can see the close, so that a new connection the
    // peer opens after it never overlaps it in the count.
    --m_open;
    ::close(fd);
}
