// Raw owner-file bytes through the owner-file reader, and the same bytes as a typed name
// through the trimming rule. Checks: neither has White_Space at either end.
#include "foundation/tpownerfile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include "tpfuzzrequire.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static QTemporaryDir folder;
    static const bool placed = [] {
        TPSetOwnerFileLocations({folder.path(), folder.path() + QStringLiteral("/groups")});
        return QDir().mkpath(folder.path() + QStringLiteral("/var/tmp"));
    }();
    require(placed && folder.isValid());

    QFile file(TPOwnerFilePrimaryPath());
    require(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(reinterpret_cast<const char *>(data), qint64(size));
    file.close();

    const QString name = TPReadOwnerFile();
    if (!name.isEmpty()) {
        require(!name.front().isSpace() && !name.back().isSpace());
        require(TPTrimmedName(name) == name);
    }
    const QString typed = QString::fromUtf8(reinterpret_cast<const char *>(data), qsizetype(size));
    const QString trimmed = TPTrimmedName(typed);
    if (!trimmed.isEmpty())
        require(!trimmed.front().isSpace() && !trimmed.back().isSpace());
    return 0;
}
