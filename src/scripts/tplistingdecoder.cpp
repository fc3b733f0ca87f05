#include "scripts/tplistingdecoder.h"

#include "engine/tpengineapi.h"
#include "scripts/tpscripttree.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <simdjson.h>

#include <algorithm>
#include <cstring>

namespace TPListingDecoder {

namespace {

using namespace simdjson;

// Calls `visit(key, value)` for each member of the object in `value`, in order, until one
// reports an error.
template <typename Visit>
error_code forEachMember(ondemand::value value, Visit visit)
{
    ondemand::object object;
    if (const error_code error = value.get_object().get(object))
        return error;
    for (auto field : object) {
        // A key without escapes, nearly every key, is read in place from the input; only
        // a key with a backslash is unescaped, which also checks its escapes.
        ondemand::raw_json_string raw;
        if (const error_code error = field.key().get(raw))
            return error;
        const char *const start = raw.raw();
        const char *end = start;
        while (*end != '"' && *end != '\\')
            ++end;
        std::string_view key(start, size_t(end - start));
        ondemand::value member;
        if (*end == '\\') {
            if (const error_code error = field.unescaped_key().get(key))
                return error;
        }
        if (const error_code error = field.value().get(member))
            return error;
        if (const error_code error = visit(key, member))
            return error;
    }
    return SUCCESS;
}

// Reads a value whatever it holds, so that a malformed one is found.
error_code check(ondemand::value value)
{
    ondemand::json_type type;
    if (const error_code error = value.type().get(type))
        return error;
    switch (type) {
    case ondemand::json_type::object:
        return forEachMember(
            value, [](std::string_view, ondemand::value member) { return check(member); });
    case ondemand::json_type::array: {
        ondemand::array array;
        if (const error_code error = value.get_array().get(array))
            return error;
        for (auto element : array) {
            ondemand::value item;
            if (const error_code error = element.get(item))
                return error;
            if (const error_code error = check(item))
                return error;
        }
        return SUCCESS;
    }
    case ondemand::json_type::string:
        return value.get_string().error();
    case ondemand::json_type::number:
        return value.get_double().error();
    case ondemand::json_type::boolean:
        return value.get_bool().error();
    case ondemand::json_type::null:
        return value.is_null().error();
    }
    return INCORRECT_TYPE;
}

// One element of "entries": its "path" as Qt would read it (the last of repeated members
// wins; a non-object has none), as unescaped UTF-8. "dir" is only checked here: it is read
// from the record of a kept entry.
struct EntryPath
{
    bool isText = false;
    std::string_view text;
};

error_code readEntry(ondemand::value value, EntryPath &path)
{
    ondemand::json_type type;
    if (const error_code error = value.type().get(type))
        return error;
    if (type != ondemand::json_type::object)
        return check(value);
    return forEachMember(value, [&path](std::string_view key, ondemand::value member) {
        if (key != "path")
            return check(member);
        ondemand::json_type memberType;
        if (const error_code error = member.type().get(memberType))
            return error;
        if (memberType != ondemand::json_type::string) {
            path = {};
            return check(member);
        }
        std::string_view text;
        if (const error_code error = member.get_string().get(text))
            return error;
        path = {true, text};
        return SUCCESS;
    });
}

// The text of the element that ends where `end` now points: back over blanks and a comma.
QByteArray elementText(const char *start, const char *end)
{
    while (end > start && (end[-1] == ' ' || end[-1] == '\n' || end[-1] == '\r' ||
                           end[-1] == '\t' || end[-1] == ',' || end[-1] == ']'))
        --end;
    return QByteArray(start, end - start);
}

// Qt's reader over the whole body, for the rare body simdjson refuses: Qt's reader is more
// lenient in places (an unknown escape in a text), and its verdict is the one that counts.
std::optional<QJsonArray> readWithQt(const QByteArray &body, const QString &folder)
{
    const std::optional<QJsonArray> entries = TPEngineAPI::listingEntries(body);
    if (!entries)
        return std::nullopt;
    return TPScriptTree::filterChildrenOf(folder, *entries);
}

// TPScriptTree::isChildPath on the UTF-8 bytes: a prefix of the text is a prefix of its
// bytes, and "/" is one byte that no other character contains.
class ChildMatcher
{
public:
    explicit ChildMatcher(const QString &folder)
        : m_prefixBytes(TPScriptTree::childPrefix(folder).toUtf8())
    {}
    bool matches(std::string_view path) const
    {
        const std::string_view prefix(m_prefixBytes.constData(), size_t(m_prefixBytes.size()));
        if (path.empty() || path.substr(0, prefix.size()) != prefix)
            return false;
        const std::string_view remainder = path.substr(prefix.size());
        // A path is short: a plain loop beats a call to memchr here.
        return !remainder.empty() &&
               std::find(remainder.begin(), remainder.end(), '/') == remainder.end();
    }

private:
    QByteArray m_prefixBytes;
};

// Reads the array of entries in `entries`, appending the record of each child of the folder
// to `kept` and counting the elements in `count`. `text` is the buffer the document was
// read from, `length` its JSON's length.
error_code keepChildren(ondemand::document &document, ondemand::array entries, const char *text,
                        size_t length, const ChildMatcher &matcher, QList<QJsonValue> &kept,
                        size_t &count)
{
    for (auto element : entries) {
        ++count;
        const char *start = nullptr;
        ondemand::value value;
        if (const error_code error = document.current_location().get(start))
            return error;
        if (const error_code error = element.get(value))
            return error;
        EntryPath path;
        if (const error_code error = readEntry(value, path))
            return error;
        if (!path.isText || !matcher.matches(path.text))
            continue;
        const char *end = nullptr;
        if (document.current_location().get(end))
            end = text + length;
        // Only a kept entry becomes a record, read by Qt as the whole listing would be.
        kept.append(QJsonDocument::fromJson(elementText(start, end)).object());
    }
    return SUCCESS;
}

// Whether nothing but the end of the document is left to read.
bool atEnd(ondemand::document &document)
{
    const char *trailing = nullptr;
    return document.current_location().get(trailing) != SUCCESS;
}

// The general path: the whole body in one document.
std::optional<QJsonArray> readWithSimdjson(QByteArray body, const QString &folder)
{
    const qsizetype length = body.size();
    // The parser reads a little past the end. The engine client leaves that room, so the
    // body is only copied when it came from elsewhere.
    if (body.capacity() - length < qsizetype(SIMDJSON_PADDING))
        body.reserve(length + qsizetype(SIMDJSON_PADDING));
    ondemand::parser parser;
    ondemand::document document;
    if (parser.iterate(body.constData(), size_t(length), size_t(body.capacity())).get(document))
        return std::nullopt;
    ondemand::object top;
    if (document.get_object().get(top))
        return std::nullopt;

    const ChildMatcher matcher(folder);
    std::optional<QList<QJsonValue>> kept;
    for (auto field : top) {
        std::string_view key;
        ondemand::value member;
        if (field.unescaped_key().get(key) || field.value().get(member))
            return std::nullopt;
        if (key != "entries") {
            if (check(member))
                return std::nullopt;
            continue;
        }
        // A later "entries" replaces an earlier one, as in Qt's reader.
        ondemand::json_type type;
        if (member.type().get(type))
            return std::nullopt;
        if (type != ondemand::json_type::array) {
            kept.reset();
            if (check(member))
                return std::nullopt;
            continue;
        }
        ondemand::array entries;
        if (member.get_array().get(entries))
            return std::nullopt;
        kept.emplace();
        size_t count = 0;
        if (keepChildren(document, entries, body.constData(), size_t(length), matcher, *kept,
                         count))
            return std::nullopt;
    }
    // Anything after the object makes the body invalid.
    if (!atEnd(document) || !kept)
        return std::nullopt;
    return TPScriptTree::sortedChildren(std::move(*kept));
}

bool isBlank(char byte)
{
    return byte == ' ' || byte == '\n' || byte == '\r' || byte == '\t';
}

// Moves `at` past JSON blanks.
const char *skipBlanks(const char *at, const char *end)
{
    while (at < end && isBlank(*at))
        ++at;
    return at;
}

// Moves `at` past the literal `word` when it is there.
bool skipWord(const char *&at, const char *end, std::string_view word)
{
    at = skipBlanks(at, end);
    if (size_t(end - at) < word.size() || std::string_view(at, word.size()) != word)
        return false;
    at += word.size();
    return true;
}

// The closing quote of a string whose text starts at `at`: the first quote not escaped by
// an odd run of backslashes. Nothing when the text ends first.
const char *stringEnd(const char *at, const char *end)
{
    for (;;) {
        const auto *quote = static_cast<const char *>(std::memchr(at, '"', size_t(end - at)));
        if (!quote)
            return nullptr;
        const char *backslashes = quote;
        while (backslashes > at && backslashes[-1] == '\\')
            --backslashes;
        if ((quote - backslashes) % 2 == 0)
            return quote;
        at = quote + 1;
    }
}

// Finds where a window of an array's elements ends: the first comma between elements at
// least a given number of bytes on, or the array's closing bracket. Strings are stepped
// over whole; the brackets inside elements only have to balance, since the parser checks
// each window. It scans bytes as they arrive and resumes where it stopped.
class WindowCutter
{
public:
    enum class Result { Found, NeedMore, Malformed };

    void restart(qsizetype from)
    {
        m_position = from;
        m_depth = 0;
    }

    // Scans `data` up to `size`. On Found, `cut` is the offset of the comma or bracket.
    Result scan(const char *data, qsizetype size, qsizetype wanted, qsizetype &cut)
    {
        for (; m_position < size; ++m_position) {
            switch (data[m_position]) {
            case '"': {
                const char *const close = stringEnd(data + m_position + 1, data + size);
                // An unfinished string is scanned again from its quote.
                if (!close)
                    return Result::NeedMore;
                m_position = close - data;
                break;
            }
            case '{':
            case '[':
                ++m_depth;
                break;
            case '}':
            case ']':
                if (m_depth == 0) {
                    cut = m_position;
                    return data[m_position] == ']' ? Result::Found : Result::Malformed;
                }
                --m_depth;
                break;
            case ',':
                if (m_depth == 0 && m_position >= wanted) {
                    cut = m_position;
                    return Result::Found;
                }
                break;
            default:
                break;
            }
        }
        return Result::NeedMore;
    }

private:
    qsizetype m_position = 0;
    int m_depth = 0;
};

} // namespace

// The fast path, for a body shaped as the engine writes it: one object whose only member
// is "entries", an array. The elements are read in windows of about kWindowBytes as the
// body arrives, each copied into one reused buffer as an array of its own, so that the
// parser's index and text buffer never grow past a window. Any other shape, and any window
// the parser refuses, leaves the decision to the general path once the body is whole.
//
// A window's end is first guessed where the engine's own output puts one: the "},{"
// between two entries, or the array's bracket at the very end of the body. A wrong guess
// (inside a text or a nested value) always leaves the window unbalanced, so the parser
// refuses it, and the window's end is then found by scanning every byte.
struct Stream::Windows
{
    static constexpr qsizetype kWindowBytes = 32 * 1024;
    // Enough bytes to hold the opening '{"entries":[' with a little room for blanks.
    static constexpr qsizetype kPrefixBytes = 64;

    enum class Phase { Prefix, Elements, AfterArray, Failed };

    explicit Windows(const QString &folder) : matcher(folder) {}

    void readPrefix(const QByteArray &received)
    {
        const char *at = received.constData();
        const char *const end = at + received.size();
        // The buffers are sized once for a window and its slack, so that windows reuse the
        // same memory; and only here, on the thread that reads, once there is a listing.
        if (skipWord(at, end, "{") && skipWord(at, end, "\"entries\"") && skipWord(at, end, ":") &&
            skipWord(at, end, "[") && !parser.allocate(2 * kWindowBytes)) {
            window.reserve(2 * kWindowBytes + qsizetype(SIMDJSON_PADDING));
            next = at - received.constData();
            cutter.restart(next);
            phase = Phase::Elements;
        } else {
            phase = Phase::Failed;
        }
    }

    // Reads every window that the bytes so far complete; `complete` when they are all.
    void readElements(const QByteArray &received, bool complete)
    {
        const char *const data = received.constData();
        const qsizetype size = received.size();
        while (phase == Phase::Elements) {
            qsizetype cut = -1;
            if (!scanning) {
                cut = guessedCut(data, size, complete);
                if (cut < 0 && !complete)
                    return;
                if (cut >= 0 && readWindow(data + next, data + cut)) {
                    passWindow(data, cut);
                    continue;
                }
                scanning = true;
            }
            const WindowCutter::Result result = cutter.scan(data, size, next + kWindowBytes, cut);
            if (result == WindowCutter::Result::NeedMore && !complete)
                return;
            if (result != WindowCutter::Result::Found || !readWindow(data + next, data + cut)) {
                phase = Phase::Failed;
                return;
            }
            passWindow(data, cut);
        }
    }

    qsizetype guessedCut(const char *data, qsizetype size, bool complete) const
    {
        const qsizetype wanted = next + kWindowBytes;
        if (wanted < size) {
            if (const void *between = memmem(data + wanted, size_t(size - wanted), "},{", 3))
                return static_cast<const char *>(between) - data + 1;
        }
        if (!complete)
            return -1;
        // Back from the end over blanks, the object's brace and blanks to the bracket.
        qsizetype at = size;
        const auto skipBack = [&] {
            while (at > next && isBlank(data[at - 1]))
                --at;
        };
        skipBack();
        if (at <= next || data[at - 1] != '}')
            return -1;
        --at;
        skipBack();
        return at > next && data[at - 1] == ']' ? at - 1 : -1;
    }

    void passWindow(const char *data, qsizetype cut)
    {
        first = false;
        scanning = false;
        next = cut + 1;
        cutter.restart(next);
        if (data[cut] == ']')
            phase = Phase::AfterArray;
    }

    bool readWindow(const char *at, const char *cut)
    {
        window.resize(0);
        window.reserve((cut - at) + 2 + qsizetype(SIMDJSON_PADDING));
        window.append('[').append(at, cut - at).append(']');
        ondemand::document document;
        ondemand::array entries;
        if (parser.iterate(window.constData(), size_t(window.size()), size_t(window.capacity()))
                .get(document) ||
            document.get_array().get(entries))
            return false;
        // After a comma an element must follow: "[1,]" is not an array.
        size_t count = 0;
        return !keepChildren(document, entries, window.constData(), size_t(window.size()), matcher,
                             kept, count) &&
               (first || count > 0) && atEnd(document);
    }

    ChildMatcher matcher;
    ondemand::parser parser;
    QByteArray window;
    QList<QJsonValue> kept;
    WindowCutter cutter;
    Phase phase = Phase::Prefix;
    qsizetype next = 0;
    bool first = true;
    // Whether the current window's end is being found by scanning, after a wrong guess.
    bool scanning = false;
};

Stream::Stream(const QString &folder)
    : m_folder(folder), m_windows(std::make_unique<Windows>(folder))
{}

Stream::~Stream() = default;

void Stream::read(const QByteArray &received)
{
    if (m_windows->phase == Windows::Phase::Prefix && received.size() >= Windows::kPrefixBytes)
        m_windows->readPrefix(received);
    if (m_windows->phase == Windows::Phase::Elements)
        m_windows->readElements(received, false);
}

std::optional<QJsonArray> Stream::finish(const QByteArray &body)
{
    if (m_windows->phase == Windows::Phase::Prefix)
        m_windows->readPrefix(body);
    if (m_windows->phase == Windows::Phase::Elements)
        m_windows->readElements(body, true);
    if (m_windows->phase == Windows::Phase::AfterArray) {
        const char *at = body.constData() + m_windows->next;
        const char *const end = body.constData() + body.size();
        if (skipWord(at, end, "}") && skipBlanks(at, end) == end)
            return TPScriptTree::sortedChildren(std::move(m_windows->kept));
    }
    if (std::optional<QJsonArray> children = readWithSimdjson(body, m_folder))
        return children;
    return readWithQt(body, m_folder);
}

std::optional<QJsonArray> childrenOf(const QByteArray &body, const QString &folder)
{
    return Stream(folder).finish(body);
}

} // namespace TPListingDecoder
