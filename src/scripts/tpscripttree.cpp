#include "scripts/tpscripttree.h"

#include "engine/tpengineapi.h"
#include "foundation/tppathrules.h"

#include <QJsonObject>

#include <algorithm>
#include <vector>

#include <unicode/stringoptions.h>
#include <unicode/ustring.h>

namespace TPScriptTree {

namespace {

// The truth value of a JSON member the way a loosely typed engine may write it:
// booleans as themselves, numbers when non-zero, texts that read as yes/true or a
// non-zero number.
bool truthValue(const QJsonValue &value)
{
    switch (value.type()) {
    case QJsonValue::Bool:
        return value.toBool();
    case QJsonValue::Double:
        return value.toDouble() != 0.0;
    case QJsonValue::String:
        return textTruthValue(value.toString());
    default:
        return false;
    }
}

} // namespace

bool textTruthValue(const QString &value)
{
    const QString text = value.trimmed();
    if (text.isEmpty())
        return false;
    qsizetype i = (text.front() == u'+' || text.front() == u'-') ? 1 : 0;
    while (i < text.size() && text.at(i) == u'0')
        ++i;
    if (i >= text.size())
        return false;
    const QChar first = text.at(i).toLower();
    return first == u'y' || first == u't' || (first >= u'1' && first <= u'9');
}

bool isChildPath(const QString &prefix, const QString &path)
{
    if (path.isEmpty())
        return false;
    if (!prefix.isEmpty() && !path.startsWith(prefix, Qt::CaseSensitive))
        return false;
    const QStringView remainder = QStringView(path).mid(prefix.size());
    return !remainder.isEmpty() && !remainder.contains(u'/');
}

QString childPrefix(const QString &folder)
{
    return folder.isEmpty() ? QString() : folder + u'/';
}

namespace {

// Full Unicode case folding ("ß" is "ss", "ﬀ" is "ff"), the same in every locale, then
// UTF-16 code unit order, as the platform's case-insensitive compare orders: a name that
// starts beyond the basic plane (a surrogate) sorts before one that starts at U+E000 or
// above. ICU takes ill-formed text as it is, so there is no failure to handle.
int compareFolded(const QString &a, const QString &b)
{
    UErrorCode status = U_ZERO_ERROR;
    return u_strCaseCompare(reinterpret_cast<const UChar *>(a.utf16()), int32_t(a.size()),
                            reinterpret_cast<const UChar *>(b.utf16()), int32_t(b.size()),
                            U_FOLD_CASE_DEFAULT, &status);
}

} // namespace

QJsonArray sortedChildren(QList<QJsonValue> kept)
{
    // Each entry's kind and name are read once, not at every comparison: a folder of 10,000
    // children takes some 140,000 comparisons.
    struct Key
    {
        bool folder;
        QString name;
        qsizetype index;
    };
    std::vector<Key> keys;
    keys.reserve(size_t(kept.size()));
    for (qsizetype i = 0; i < kept.size(); ++i)
        keys.push_back({isFolderEntry(kept.at(i)), entryName(kept.at(i)), i});
    std::stable_sort(keys.begin(), keys.end(), [](const Key &a, const Key &b) {
        if (a.folder != b.folder)
            return a.folder;
        return compareFolded(a.name, b.name) < 0;
    });
    QJsonArray children;
    for (const Key &key : keys)
        children.append(kept.at(key.index));
    return children;
}

bool isFolderEntry(const QJsonValue &entry)
{
    return truthValue(entry.toObject().value(QLatin1String("dir")));
}

QString entryName(const QJsonValue &entry)
{
    return TPLastPathSegment(TPEngineAPI::entryPath(entry));
}

QString rowLabel(const QJsonValue &entry)
{
    return QStringLiteral("%1 %2").arg(isFolderEntry(entry) ? kFolderMark : kFileMark,
                                       entryName(entry));
}

QJsonArray filterChildrenOf(const QString &folder, const QJsonArray &listing)
{
    const QString prefix = childPrefix(folder);
    QList<QJsonValue> kept;
    for (const QJsonValue &entry : listing) {
        if (isChildPath(prefix, TPEngineAPI::entryPath(entry)))
            kept.append(entry);
    }
    return sortedChildren(std::move(kept));
}

} // namespace TPScriptTree

namespace TPScriptTree {

QStringList moveTargets(const QJsonArray &listing, const QString &moving)
{
    std::vector<QStringList> folders;
    for (const QJsonValue &entry : listing) {
        const QString path = TPEngineAPI::entryPath(entry);
        if (path.isEmpty() || !isFolderEntry(entry) || path == moving ||
            path.startsWith(moving + u'/'))
            continue;
        folders.push_back(path.split(u'/'));
    }
    // Segment by segment, so that a folder comes right before its own subfolders.
    std::stable_sort(folders.begin(), folders.end(),
                     [](const QStringList &a, const QStringList &b) {
                         for (qsizetype i = 0; i < std::min(a.size(), b.size()); ++i) {
                             if (const int order = compareFolded(a.at(i), b.at(i)))
                                 return order < 0;
                         }
                         return a.size() < b.size();
                     });
    QStringList targets{QString()};
    for (const QStringList &segments : folders)
        targets.append(segments.join(u'/'));
    targets.removeDuplicates();
    return targets;
}

QStringList filesOf(const QJsonArray &listing)
{
    QStringList files;
    for (const QJsonValue &entry : listing) {
        const QString path = TPEngineAPI::entryPath(entry);
        if (!path.isEmpty() && !isFolderEntry(entry))
            files.append(path);
    }
    return files;
}

Contents contentsOf(const QString &folder, const QJsonArray &listing)
{
    Contents contents{{folder}, {}};
    const QString prefix = childPrefix(folder);
    for (const QJsonValue &entry : listing) {
        const QString path = TPEngineAPI::entryPath(entry);
        if (path.size() <= prefix.size() || !path.startsWith(prefix))
            continue;
        (isFolderEntry(entry) ? contents.folders : contents.files).append(path);
    }
    // A folder's path is longer than the path of the folder it is in.
    std::stable_sort(
        contents.folders.begin() + 1, contents.folders.end(),
        [](const QString &a, const QString &b) { return a.count(u'/') < b.count(u'/'); });
    return contents;
}

} // namespace TPScriptTree
