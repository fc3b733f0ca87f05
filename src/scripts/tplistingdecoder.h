#pragma once

#include <QByteArray>
#include <QJsonArray>
#include <QString>

#include <memory>
#include <optional>

// Reads the engine's listing body straight into one folder's children, without building a
// document of the whole listing: only the kept entries become JSON records. It gives what
// TPScriptTree::filterChildrenOf gives for the listing Qt's JSON reader makes of the same
// body: the same records, in the same order, and nothing for a body that is not a JSON
// object with an "entries" array. Every value is read, so a malformed body is refused even
// where the folder needs no part of it. Safe on any thread.
namespace TPListingDecoder {

// Reads a listing while its body arrives, so that little is left to do when the last byte
// comes: most of a large listing is decoded during the transfer. Used by one thread at a
// time.
class Stream
{
public:
    explicit Stream(const QString &folder);
    ~Stream();
    Stream(const Stream &) = delete;
    Stream &operator=(const Stream &) = delete;

    // Reads what the bytes received so far allow. `received` only ever grows at its end,
    // though its bytes may move.
    void read(const QByteArray &received);
    // The whole body is in: the folder's children, or nothing when the body is not a valid
    // listing.
    std::optional<QJsonArray> finish(const QByteArray &body);

private:
    struct Windows;
    QString m_folder;
    std::unique_ptr<Windows> m_windows;
};

// The folder's children of a whole body, or nothing when it is not a valid listing.
std::optional<QJsonArray> childrenOf(const QByteArray &body, const QString &folder);

} // namespace TPListingDecoder
