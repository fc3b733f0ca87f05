// Typed names through the name sanitiser, the path join, the new-entry rule and the rename
// rule. Checks: a sanitised name holds only the 65 allowed characters; a new entry or a
// rename lands in its folder as one non-empty segment; a new file ends in ".lua".
#include "foundation/tppathrules.h"

#include "tpfuzzrequire.h"

namespace {

bool isAllowed(QChar ch)
{
    const char16_t unit = ch.unicode();
    return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z') ||
           (unit >= u'0' && unit <= u'9') || unit == u'.' || unit == u'_' || unit == u'-';
}

void requireInFolder(const std::optional<QString> &path, const QString &folder)
{
    if (!path)
        return;
    require(TPParentPath(*path) == folder);
    const QString name = TPLastPathSegment(*path);
    require(!name.isEmpty());
    for (const QChar ch : name)
        require(isAllowed(ch));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString typed =
        QString::fromUtf16(reinterpret_cast<const char16_t *>(data), qsizetype(size / 2));
    const QString sanitised = TPSanitizeSegment(typed);
    for (const QChar ch : sanitised)
        require(isAllowed(ch));
    require(sanitised.size() <= typed.size());

    const QString folder = QStringLiteral("lib/sub");
    require(TPJoinPath(folder, sanitised) == folder + u'/' + sanitised);
    require(TPJoinPath(QString(), sanitised) == sanitised);

    const std::optional<QString> file = TPNewEntryPath(folder, typed, false);
    requireInFolder(file, folder);
    if (file)
        require(file->endsWith(QLatin1String(TPScriptSuffix), Qt::CaseInsensitive));
    requireInFolder(TPNewEntryPath(QString(), typed, true), QString());
    const std::optional<QString> renamed =
        TPRenameDestination(folder + QStringLiteral("/old.lua"), typed);
    requireInFolder(renamed, folder);
    if (renamed)
        require(*renamed != folder + QStringLiteral("/old.lua"));
    return 0;
}
