#include "tpdevenginepaths.h"

#include <QDir>
#include <QFileInfo>

namespace {

bool isInside(const QString &path, const QString &folder)
{
    return path == folder || path.startsWith(folder + u'/');
}

} // namespace

TPDevEnginePaths::TPDevEnginePaths(const QString &root)
    : m_root(QDir(root).absolutePath()), m_canonicalRoot(QFileInfo(root).canonicalFilePath())
{}

std::optional<QString> TPDevEnginePaths::resolve(const QString &relative) const
{
    if (relative.isEmpty() || relative.startsWith(u'/') || relative.contains(u'\\') ||
        relative.contains(QChar(0)))
        return std::nullopt;
    const QStringList segments = relative.split(u'/');
    for (const QString &segment : segments) {
        if (segment.isEmpty() || segment == QLatin1String(".") || segment == QLatin1String(".."))
            return std::nullopt;
    }
    const QString absolute = m_root + u'/' + relative;

    // Links are judged where they lead: the deepest part of the path that exists must
    // resolve to a place under the root.
    QString existing = absolute;
    while (!QFileInfo(existing).exists() && !QFileInfo(existing).isSymLink())
        existing = QFileInfo(existing).absolutePath();
    const QFileInfo existingInfo(existing);
    if (existingInfo.isSymLink() && !existingInfo.exists())
        return std::nullopt; // a dangling link may point anywhere
    if (!isInside(existingInfo.canonicalFilePath(), m_canonicalRoot))
        return std::nullopt;
    return absolute;
}

QString TPDevEnginePaths::relativePath(const QString &absolute) const
{
    return QDir(m_root).relativeFilePath(absolute);
}
