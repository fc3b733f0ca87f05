#include "editor/tpdraftstore.h"

#include "foundation/tpatomicfile.h"

#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

namespace {

// A script's draft file: named by a hash of its path, since a path may hold characters a
// file name cannot, and folders of the script tree need no folders here.
QString draftPath(const QString &relPath)
{
    const QByteArray name =
        QCryptographicHash::hash(relPath.toUtf8(), QCryptographicHash::Sha1).toHex();
    return TPDraftStore::folder() + u'/' + QString::fromLatin1(name) + QStringLiteral(".draft");
}

} // namespace

QString TPDraftStore::folder()
{
    return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) +
           QStringLiteral("/drafts");
}

std::optional<TPDraftStore::Draft> TPDraftStore::read(const QString &relPath)
{
    QFile file(draftPath(relPath));
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    Draft draft{file.readAll(), QFileInfo(file).lastModified()};
    if (file.error() != QFileDevice::NoError)
        return std::nullopt;
    return draft;
}

bool TPDraftStore::write(const QString &relPath, const QByteArray &bytes)
{
    return TPWriteFileAtomically(draftPath(relPath), bytes);
}

void TPDraftStore::remove(const QString &relPath)
{
    QFile::remove(draftPath(relPath));
}

void TPDraftStore::move(const QString &from, const QString &to)
{
    if (!QFile::exists(draftPath(from)))
        return;
    QFile::remove(draftPath(to));
    QFile::rename(draftPath(from), draftPath(to));
}
