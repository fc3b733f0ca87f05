#pragma once

#include <QByteArray>
#include <QJsonArray>
#include <QString>

#include <optional>

// Reads the engine's listing body straight into one folder's children, without building a
// document of the whole listing: only the kept entries become JSON records. It gives what
// TPScriptTree::filterChildrenOf gives for the listing Qt's JSON reader makes of the same
// body: the same records, in the same order, and nothing for a body that is not a JSON
// object with an "entries" array. Every value is read, so a malformed body is refused even
// where the folder needs no part of it. Safe on any thread.
namespace TPListingDecoder {

// The folder's children, or nothing when the body is not a valid listing. The body is
// read in place when it has room for the parser's padding after its bytes.
std::optional<QJsonArray> childrenOf(QByteArray body, const QString &folder);

} // namespace TPListingDecoder
