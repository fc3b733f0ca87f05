#pragma once

#include <QByteArray>

// Reads one HTTP/1.1 answer as its bytes arrive: the status line, the headers, and the
// body framed by Content-Length, by chunks, or by the end of the connection. Informational
// (1xx) answers before the real one are skipped. The body is kept in one block, sized from
// Content-Length when the answer gives one, with room after it for a reader that looks
// ahead. It parses bytes only and touches no socket, so any input can be fed to it.
class TPHttpAnswer
{
public:
    enum class State {
        Head,      // the status line and headers are still arriving
        Body,      // the body is arriving
        Complete,  // the whole answer is in
        Malformed, // the bytes are not an HTTP answer, or the answer was cut off
    };

    // Bytes kept free after the body for readers that look past its end.
    static constexpr qsizetype ReadAheadRoom = 64;
    // The most that the status line and headers may take.
    static constexpr qsizetype MaxHeadBytes = 64 * 1024;

    // Takes the next `size` bytes of the connection.
    void received(const char *data, qsizetype size);
    // Where the next body bytes may be written straight from the socket, up to `room`
    // bytes, while the body's length is known; null when they must go through received().
    char *directSpace(qsizetype &room);
    // `count` bytes were written where directSpace() said.
    void directWritten(qsizetype count);
    // The connection ended: completes a body that runs to the end of the connection and
    // marks any other unfinished answer as cut off.
    void closed();

    State state() const { return m_state; }
    // The status code once the head of the final answer is in, 0 before.
    int status() const { return m_status; }
    // The body's length while it arrives into a block reserved for all of it, which
    // therefore never moves; -1 for any other body.
    qsizetype fixedBodyLength() const;
    // The body bytes received so far, decoded from chunks.
    const QByteArray &body() const { return m_body; }

private:
    enum class Framing { Length, Chunked, UntilClose, Empty };
    enum class ChunkStep { Size, Data, DataEnd, Trailer };

    void readHead(const char *&data, const char *end);
    bool parseHead();
    void startBody(qint64 length);
    // Moves body bytes, up to the count still expected, from `data`; true once that count
    // is reached.
    bool takeBody(const char *&data, const char *end);
    void readLength(const char *&data, const char *end);
    void readChunked(const char *&data, const char *end);
    bool takeLine(const char *&data, const char *end, QByteArray &line);
    void appendBody(const char *data, qsizetype size);
    bool makeRoom(qsizetype size);
    void populateAhead(qsizetype needed);

    State m_state = State::Head;
    int m_status = 0;
    QByteArray m_head;
    QByteArray m_body;
    // How much of the body's block has its pages already.
    qsizetype m_populated = 0;
    qsizetype m_directFrom = 0;
    Framing m_framing = Framing::Empty;
    qint64 m_remaining = 0;
    qint64 m_length = -1;
    ChunkStep m_chunkStep = ChunkStep::Size;
    QByteArray m_line;
};
