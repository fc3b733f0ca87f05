#pragma once

#include <QByteArray>
#include <QList>

#include <atomic>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

// One connection of a TPRawServer, as its script sees it. Every wait is bounded, and ends
// early when the server stops.
class TPRawConnection
{
public:
    using Recorder = std::function<void(const QByteArray &request)>;
    TPRawConnection(int fd, const std::atomic<bool> &stopping, Recorder recorder)
        : m_fd(fd), m_stopping(stopping), m_recorder(std::move(recorder))
    {}

    // Reads one whole request: the head and a body of its Content-Length. Empty when the
    // peer closed first or nothing came within `timeoutMs`.
    QByteArray readRequest(int timeoutMs = 10000);
    // Writes all of `bytes`; false when the peer is gone.
    bool write(const QByteArray &bytes);
    // Writes `bytes` one piece at a time, with `pauseMs` between pieces, so that each
    // piece arrives in a segment of its own.
    bool writeInPieces(const QList<QByteArray> &pieces, int pauseMs);
    // The server's own pacing between writes.
    void pause(int ms);
    // Reads and drops what the peer sends until it closes; false after `timeoutMs`.
    bool drainUntilClosed(int timeoutMs = 10000);
    // Makes the close when the script returns a reset instead of an orderly close.
    void resetOnClose();
    bool stopping() const { return m_stopping; }
    int fd() const { return m_fd; }

private:
    // Waits for the socket to be readable; false on time-out or when the server stops.
    bool waitReadable(int timeoutMs);

    int m_fd;
    const std::atomic<bool> &m_stopping;
    const Recorder m_recorder;
    QByteArray m_buffer;
};

// A loopback server that does exactly what a test scripts, at the socket level: each
// connection runs the script on a thread of its own and is closed when the script returns.
// It counts connections, and the most that were open at once.
class TPRawServer
{
public:
    using Script = std::function<void(TPRawConnection &)>;

    explicit TPRawServer(Script script);
    // Stops accepting, wakes every script's wait and joins every thread.
    ~TPRawServer();
    TPRawServer(const TPRawServer &) = delete;
    TPRawServer &operator=(const TPRawServer &) = delete;

    // Listens on a free loopback port and points the engine client at it.
    bool startAsTheEngine();
    quint16 port() const { return m_port; }
    int connectionsAccepted() const { return m_accepted; }
    int mostOpenAtOnce() const { return m_mostOpen; }
    // The requests read by readRequest() so far, in the order they were read.
    QList<QByteArray> requests() const;

private:
    void acceptLoop();
    void serve(int fd);

    Script m_script;
    int m_listener = -1;
    quint16 m_port = 0;
    int m_wakePipe[2] = {-1, -1};
    std::atomic<bool> m_stopping{false};
    std::atomic<int> m_accepted{0};
    std::atomic<int> m_open{0};
    std::atomic<int> m_mostOpen{0};
    mutable std::mutex m_mutex;
    QList<QByteArray> m_requests;
    std::vector<std::thread> m_connections;
    std::thread m_acceptor;
};
