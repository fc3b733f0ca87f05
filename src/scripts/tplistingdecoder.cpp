#include "tplistingdecoder.h"

#include "tpengineapi.h"
#include "tpscripttree.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <simdjson.h>

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
        std::string_view key;
        ondemand::value member;
        if (const error_code error = field.unescaped_key().get(key))
            return error;
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

std::optional<QJsonArray> readWithSimdjson(QByteArray body, const QString &folder)
{
    const qsizetype length = body.size();
    // The parser reads a little past the end; growing a large block in place costs no copy.
    body.reserve(length + qsizetype(SIMDJSON_PADDING));
    ondemand::parser parser;
    ondemand::document document;
    if (parser.iterate(body.constData(), size_t(length), size_t(body.capacity())).get(document))
        return std::nullopt;
    ondemand::object top;
    if (document.get_object().get(top))
        return std::nullopt;

    // TPScriptTree::isChildPath on the UTF-8 bytes: a prefix of the text is a prefix of its
    // bytes, and "/" is one byte that no other character contains.
    const QByteArray prefixBytes = TPScriptTree::childPrefix(folder).toUtf8();
    const std::string_view prefix(prefixBytes.constData(), size_t(prefixBytes.size()));
    const auto isChild = [&prefix](std::string_view path) {
        if (path.empty() || path.substr(0, prefix.size()) != prefix)
            return false;
        const std::string_view remainder = path.substr(prefix.size());
        return !remainder.empty() && remainder.find('/') == std::string_view::npos;
    };
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
        for (auto element : entries) {
            const char *start = nullptr;
            ondemand::value value;
            if (document.current_location().get(start) || element.get(value))
                return std::nullopt;
            EntryPath path;
            if (readEntry(value, path))
                return std::nullopt;
            if (!path.isText || !isChild(path.text))
                continue;
            const char *end = nullptr;
            if (document.current_location().get(end))
                end = body.constData() + length;
            // Only a kept entry becomes a record, read by Qt as the whole listing would be.
            kept->append(QJsonDocument::fromJson(elementText(start, end)).object());
        }
    }
    // Anything after the object makes the body invalid; at the end there is no location.
    const char *trailing = nullptr;
    if (!document.current_location().get(trailing) || !kept)
        return std::nullopt;
    return TPScriptTree::sortedChildren(std::move(*kept));
}

} // namespace

std::optional<QJsonArray> childrenOf(QByteArray body, const QString &folder)
{
    if (std::optional<QJsonArray> children = readWithSimdjson(body, folder))
        return children;
    return readWithQt(body, folder);
}

} // namespace TPListingDecoder
