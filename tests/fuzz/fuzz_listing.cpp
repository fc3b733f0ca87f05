// Raw engine listing bodies through the listing decoder, the children filter and the row
// labels. The first byte picks the folder. Checks: the decoder agrees with Qt's reader and
// the filter on whether the body is a listing and on the children, and gives the same
// children when the body arrives in parts; every child's remainder is non-empty and holds
// no "/"; folders come before files.
#include "engine/tpengineapi.h"
#include "scripts/tplistingdecoder.h"
#include "scripts/tpscripttree.h"

#include <QJsonObject>

#include "tpfuzzrequire.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size == 0)
        return 0;
    static const QString folders[] = {QString(), QStringLiteral("a"), QStringLiteral("a/b"),
                                      QString::fromUtf8("é")};
    const QString folder = folders[data[0] % 4];
    const QByteArray body(reinterpret_cast<const char *>(data + 1), qsizetype(size - 1));

    const std::optional<QJsonArray> children = TPListingDecoder::childrenOf(body, folder);
    // The body as it may arrive: in parts whose sizes follow from its own bytes.
    TPListingDecoder::Stream stream(folder);
    QByteArray received;
    for (qsizetype at = 0; at < body.size();) {
        const qsizetype part = 1 + (uint8_t(body.at(at)) % 97);
        received.append(body.mid(at, part));
        at += part;
        stream.read(received);
    }
    require(stream.finish(received) == children);
    const std::optional<QJsonArray> entries = TPEngineAPI::listingEntries(body);
    require(children.has_value() == entries.has_value());
    if (!children)
        return 0;
    const QJsonArray expected = TPScriptTree::filterChildrenOf(folder, *entries);
    require(children->size() == expected.size());

    const QString prefix = TPScriptTree::childPrefix(folder);
    bool filesStarted = false;
    for (const QJsonValue &child : *children) {
        const QString path = TPEngineAPI::entryPath(child);
        require(path.startsWith(prefix));
        const QString remainder = path.mid(prefix.size());
        require(!remainder.isEmpty() && !remainder.contains(u'/'));
        const bool isFolder = TPScriptTree::isFolderEntry(child);
        require(!(isFolder && filesStarted));
        filesStarted = filesStarted || !isFolder;
        require(TPScriptTree::rowLabel(child).endsWith(remainder));
        require(expected.contains(child));
    }
    return 0;
}
