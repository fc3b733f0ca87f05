#include "tphttpanswer.h"

#include <QList>

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

namespace {

// A Content-Length is trusted for the first block only up to this size; a larger body
// grows as it actually arrives, so a wrong length cannot claim memory the answer never uses.
constexpr qint64 kMaxReservedBody = qint64(256) * 1024 * 1024;
// The most one receive may write straight into the body.
constexpr qsizetype kDirectBytes = 256 * 1024;
// How far ahead of the received bytes the body's pages are asked for.
constexpr qsizetype kPopulateStep = 4 * 1024 * 1024;
// Chunk sizes past this are refused rather than risk an overflow.
constexpr qint64 kMaxChunkBytes = qint64(1) << 40;

// The decimal digits of `text` as a number, or -1 when it holds anything else.
qint64 decimal(const QByteArray &text)
{
    if (text.isEmpty() || text.size() > 15)
        return -1;
    qint64 value = 0;
    for (const char digit : text) {
        if (digit < '0' || digit > '9')
            return -1;
        value = value * 10 + (digit - '0');
    }
    return value;
}

// The hexadecimal size at the start of a chunk line (before any extension), or -1.
qint64 chunkSize(const QByteArray &line)
{
    const qsizetype extension = line.indexOf(';');
    const QByteArray digits = (extension < 0 ? line : line.left(extension)).trimmed();
    if (digits.isEmpty())
        return -1;
    qint64 value = 0;
    for (const char digit : digits) {
        const int nibble = (digit >= '0' && digit <= '9')   ? digit - '0'
                           : (digit >= 'a' && digit <= 'f') ? digit - 'a' + 10
                           : (digit >= 'A' && digit <= 'F') ? digit - 'A' + 10
                                                            : -1;
        if (nibble < 0)
            return -1;
        value = value * 16 + nibble;
        if (value > kMaxChunkBytes)
            return -1;
    }
    return value;
}

} // namespace

void TPHttpAnswer::received(const char *data, qsizetype size)
{
    const char *const end = data + size;
    while (data < end && (m_state == State::Head || m_state == State::Body)) {
        if (m_state == State::Head)
            readHead(data, end);
        else if (m_framing == Framing::Chunked)
            readChunked(data, end);
        else if (m_framing == Framing::Length)
            readLength(data, end);
        else {
            appendBody(data, end - data);
            data = end;
        }
    }
}

void TPHttpAnswer::closed()
{
    if (m_state == State::Body && m_framing == Framing::UntilClose)
        m_state = State::Complete;
    else if (m_state != State::Complete)
        m_state = State::Malformed;
}

bool TPHttpAnswer::takeLine(const char *&data, const char *end, QByteArray &line)
{
    const auto *newline = static_cast<const char *>(std::memchr(data, '\n', size_t(end - data)));
    const char *const stop = newline ? newline : end;
    m_line.append(data, stop - data);
    data = newline ? newline + 1 : end;
    if (m_line.size() > MaxHeadBytes) {
        m_state = State::Malformed;
        return false;
    }
    if (!newline)
        return false;
    if (m_line.endsWith('\r'))
        m_line.chop(1);
    line = std::exchange(m_line, QByteArray());
    return true;
}

void TPHttpAnswer::readHead(const char *&data, const char *end)
{
    QByteArray line;
    while (m_state == State::Head && takeLine(data, end, line)) {
        // Blank lines before the status line are skipped, as HTTP allows.
        if (line.isEmpty() && m_head.isEmpty())
            continue;
        if (!line.isEmpty()) {
            m_head.append(line).append('\n');
            if (m_head.size() > MaxHeadBytes)
                m_state = State::Malformed;
            continue;
        }
        if (!parseHead())
            m_state = State::Malformed;
        m_head.clear();
    }
}

bool TPHttpAnswer::parseHead()
{
    const QList<QByteArray> lines = m_head.split('\n');
    const QByteArray &statusLine = lines.first();
    // "HTTP/1.1 200 OK": the version, a space, three digits, then a space or the end.
    if (!statusLine.startsWith("HTTP/"))
        return false;
    const qsizetype space = statusLine.indexOf(' ');
    const QByteArray code = space < 0 ? QByteArray() : statusLine.mid(space + 1, 3);
    if (code.size() != 3 || (statusLine.size() > space + 4 && statusLine.at(space + 4) != ' '))
        return false;
    const int status = int(decimal(code));
    if (status < 100)
        return false;
    // An interim answer; the real one follows on the same connection.
    if (status < 200 && status != 101)
        return true;

    qint64 length = -1;
    bool chunked = false;
    for (qsizetype i = 1; i < lines.size(); ++i) {
        const QByteArray &header = lines.at(i);
        if (header.isEmpty())
            continue;
        const qsizetype colon = header.indexOf(':');
        if (colon <= 0)
            return false;
        const QByteArray name = header.left(colon).trimmed().toLower();
        const QByteArray value = header.mid(colon + 1).trimmed();
        if (name == "content-length") {
            const qint64 given = decimal(value);
            if (given < 0 || (length >= 0 && given != length))
                return false;
            length = given;
        } else if (name == "transfer-encoding") {
            chunked = value.toLower().endsWith("chunked");
        }
    }
    m_status = status;
    if (m_status < 200 || m_status == 204 || m_status == 304)
        m_framing = Framing::Empty;
    else if (chunked)
        m_framing = Framing::Chunked;
    else if (length >= 0)
        m_framing = Framing::Length;
    else
        m_framing = Framing::UntilClose;
    startBody(m_framing == Framing::Length ? length : 0);
    return true;
}

void TPHttpAnswer::startBody(qint64 length)
{
    m_body.reserve(qsizetype(std::min(length, kMaxReservedBody)) + ReadAheadRoom);
    m_populated = 0;
    m_remaining = length;
    m_length = length;
    m_state = (m_framing == Framing::Empty || (m_framing == Framing::Length && length == 0))
                  ? State::Complete
                  : State::Body;
}

bool TPHttpAnswer::takeBody(const char *&data, const char *end)
{
    const qsizetype take = qsizetype(std::min<qint64>(m_remaining, end - data));
    appendBody(data, take);
    data += take;
    m_remaining -= take;
    return m_remaining == 0;
}

void TPHttpAnswer::readLength(const char *&data, const char *end)
{
    if (takeBody(data, end))
        m_state = State::Complete;
}

void TPHttpAnswer::readChunked(const char *&data, const char *end)
{
    QByteArray line;
    while (data < end && m_state == State::Body) {
        switch (m_chunkStep) {
        case ChunkStep::Size:
            if (!takeLine(data, end, line))
                break;
            m_remaining = chunkSize(line);
            if (m_remaining < 0)
                m_state = State::Malformed;
            else
                m_chunkStep = m_remaining == 0 ? ChunkStep::Trailer : ChunkStep::Data;
            break;
        case ChunkStep::Data:
            if (takeBody(data, end))
                m_chunkStep = ChunkStep::DataEnd;
            break;
        case ChunkStep::DataEnd:
            if (!takeLine(data, end, line))
                break;
            if (!line.isEmpty())
                m_state = State::Malformed;
            m_chunkStep = ChunkStep::Size;
            break;
        case ChunkStep::Trailer:
            // Trailer fields are read past; the blank line ends the answer.
            if (takeLine(data, end, line) && line.isEmpty())
                m_state = State::Complete;
            break;
        }
    }
}

qsizetype TPHttpAnswer::fixedBodyLength() const
{
    const bool fixed = m_state == State::Body && m_framing == Framing::Length &&
                       m_body.capacity() >= m_length + ReadAheadRoom;
    return fixed ? qsizetype(m_length) : -1;
}

char *TPHttpAnswer::directSpace(qsizetype &room)
{
    if (m_state != State::Body || m_framing != Framing::Length)
        return nullptr;
    room = qsizetype(std::min<qint64>(m_remaining, kDirectBytes));
    if (!makeRoom(room))
        return nullptr;
    m_directFrom = m_body.size();
    m_body.resize(m_directFrom + room);
    return m_body.data() + m_directFrom;
}

void TPHttpAnswer::directWritten(qsizetype count)
{
    m_body.resize(m_directFrom + count);
    m_remaining -= count;
    if (m_remaining == 0)
        m_state = State::Complete;
}

void TPHttpAnswer::appendBody(const char *data, qsizetype size)
{
    if (size > 0 && makeRoom(size))
        m_body.append(data, size);
}

bool TPHttpAnswer::makeRoom(qsizetype size)
{
    const qsizetype used = m_body.size();
    if (m_body.capacity() - used < size + ReadAheadRoom) {
        if (used > std::numeric_limits<qsizetype>::max() / 2 - size - ReadAheadRoom) {
            m_state = State::Malformed;
            return false;
        }
        m_body.reserve(std::max(2 * m_body.capacity(), used + size + ReadAheadRoom));
        m_populated = used;
    }
    if (used + size > m_populated)
        populateAhead(used + size);
    return true;
}

// Filled page by page, a large block takes one page fault per page, and on some systems
// (virtual machines above all) that is most of the time a body takes to arrive. Asking
// for the pages ahead of the bytes, a few megabytes at a time, costs one call instead. The
// call is only advice: where the system lacks it, pages come one fault at a time as before.
void TPHttpAnswer::populateAhead(qsizetype needed)
{
    const qsizetype until =
        std::min(m_body.capacity(), std::max(needed, m_populated + kPopulateStep));
#ifdef MADV_POPULATE_WRITE
    const auto page = uintptr_t(::sysconf(_SC_PAGESIZE));
    const auto start = uintptr_t(m_body.data() + m_populated);
    const uintptr_t first = (start + page - 1) & ~(page - 1);
    const uintptr_t last = (start + uintptr_t(until - m_populated)) & ~(page - 1);
    if (last > first)
        ::madvise(reinterpret_cast<void *>(first), last - first, MADV_POPULATE_WRITE);
#endif
    m_populated = until;
}
