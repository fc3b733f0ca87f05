#include "foundation/tppathrules.h"

namespace {

bool isAllowedSegmentUnit(char16_t unit)
{
    return (unit >= u'A' && unit <= u'Z') || (unit >= u'a' && unit <= u'z') ||
           (unit >= u'0' && unit <= u'9') || unit == u'.' || unit == u'_' || unit == u'-';
}

} // namespace

QString TPSanitizeSegment(const QString &text)
{
    QString result;
    result.reserve(text.size());
    for (const QChar ch : text) {
        const char16_t unit = ch.unicode();
        if (unit == u' ')
            result.append(u'_');
        else if (isAllowedSegmentUnit(unit))
            result.append(ch);
    }
    return result;
}

QString TPJoinPath(const QString &folder, const QString &name)
{
    return folder.isEmpty() ? name : folder + u'/' + name;
}

QString TPLastPathSegment(const QString &path)
{
    return path.mid(path.lastIndexOf(u'/') + 1);
}

QString TPParentPath(const QString &path)
{
    const qsizetype slash = path.lastIndexOf(u'/');
    return slash < 0 ? QString() : path.left(slash);
}

std::optional<QString> TPNewEntryPath(const QString &folder, const QString &typed, bool isFolder)
{
    QString name = TPSanitizeSegment(typed);
    if (name.isEmpty())
        return std::nullopt;
    const QLatin1String suffix(TPScriptSuffix);
    if (!isFolder && !name.endsWith(suffix, Qt::CaseInsensitive))
        name += suffix;
    return TPJoinPath(folder, name);
}

std::optional<QString> TPRenameDestination(const QString &path, const QString &typed)
{
    const QString name = TPSanitizeSegment(typed);
    if (name.isEmpty() || name == TPLastPathSegment(path))
        return std::nullopt;
    return TPJoinPath(TPParentPath(path), name);
}

qsizetype TPNameStemLength(const QString &name)
{
    const qsizetype dot = name.lastIndexOf(u'.');
    return dot > 0 ? dot : name.size();
}

QString TPCopyPath(const QString &path, const std::function<bool(const QString &)> &isTaken)
{
    const QString name = TPLastPathSegment(path);
    const QString stem = name.left(TPNameStemLength(name));
    const QString extension = name.mid(stem.size());
    for (int number = 1;; ++number) {
        const QString suffix =
            number == 1 ? QStringLiteral(" copy") : QStringLiteral(" copy %1").arg(number);
        const QString copy =
            TPJoinPath(TPParentPath(path), TPSanitizeSegment(stem + suffix) + extension);
        if (!isTaken(copy))
            return copy;
    }
}

std::optional<QString> TPMovedPath(const QString &path, const QString &from, const QString &to)
{
    if (from.isEmpty() || !path.startsWith(from))
        return std::nullopt;
    if (path.size() == from.size())
        return to;
    if (path.at(from.size()) != u'/')
        return std::nullopt;
    return to + path.mid(from.size());
}
