#include "foundation/tpownerfile.h"

#include "foundation/tpatomicfile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringDecoder>

namespace {

constexpr auto kOwnerFileTail = "/var/tmp/tapper_owner.txt";
constexpr auto kJailbreakRootPrefix = ".jbroot-";

TPOwnerFileFolders &folders()
{
    static TPOwnerFileFolders current;
    return current;
}

// The whole file as UTF-8, or none when it cannot be read or is not valid UTF-8.
std::optional<QString> readUtf8File(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return std::nullopt;
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = decoder.decode(bytes);
    if (decoder.hasError())
        return std::nullopt;
    return text;
}

} // namespace

TPOwnerFileFolders TPOwnerFileLocations()
{
    return folders();
}

void TPSetOwnerFileLocations(const TPOwnerFileFolders &newFolders)
{
    folders() = newFolders;
}

QString TPOwnerFilePrimaryPath()
{
    return folders().jailbreakRoot + QLatin1String(kOwnerFileTail);
}

std::optional<QString> TPOwnerFileFallbackPath()
{
    const QString searchFolder = folders().appGroupFolder;
    // Unsorted keeps the order in which the file system lists the entries.
    const QStringList names =
        QDir(searchFolder)
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                       QDir::Unsorted);
    for (const QString &name : names) {
        if (name.startsWith(QLatin1String(kJailbreakRootPrefix), Qt::CaseSensitive))
            return searchFolder + u'/' + name + QLatin1String(kOwnerFileTail);
    }
    return std::nullopt;
}

QString TPTrimmedName(const QString &text)
{
    // QChar::isSpace, which trimmed() uses, is exactly the Unicode White_Space set.
    return text.trimmed();
}

QString TPReadOwnerFile()
{
    std::optional<QString> text;
    const QString primary = TPOwnerFilePrimaryPath();
    if (QFileInfo::exists(primary))
        text = readUtf8File(primary);
    // Only a missing or zero-length primary falls back; a lone line feed does not.
    if (!text || text->isEmpty()) {
        if (const auto fallback = TPOwnerFileFallbackPath())
            text = readUtf8File(*fallback);
    }
    return text ? TPTrimmedName(*text) : QString();
}

bool TPSubmitOwnerName(const QString &typed)
{
    if (TPTrimmedName(typed).isEmpty())
        return false;
    TPWriteOwnerFile(typed);
    return true;
}

bool TPWriteOwnerFile(const QString &name)
{
    const QString trimmed = TPTrimmedName(name);
    if (trimmed.isEmpty())
        return false;
    const QByteArray content = (trimmed + u'\n').toUtf8();
    if (TPWriteFileAtomically(TPOwnerFilePrimaryPath(), content))
        return true;
    const auto fallback = TPOwnerFileFallbackPath();
    return fallback && TPWriteFileAtomically(*fallback, content);
}
