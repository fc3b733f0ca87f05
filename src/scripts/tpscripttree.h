#pragma once

#include <QJsonArray>
#include <QJsonValue>
#include <QString>
#include <QStringList>

// How the engine's flat listing becomes one folder's rows. Entries are the listing's own
// JSON values, passed through untouched.
namespace TPScriptTree {

// The direct children of `folder` ("" for the root): folders first, then by name with
// case folding. Entries without a usable "path" are skipped.
QJsonArray filterChildrenOf(const QString &folder, const QJsonArray &listing);

// The truth value of the entry's "dir"; a missing "dir" is a file.
bool isFolderEntry(const QJsonValue &entry);

// The last segment of the entry's path.
QString entryName(const QJsonValue &entry);

// The marks a row's label starts with.
inline constexpr QStringView kFolderMark = u"📁";
inline constexpr QStringView kFileMark = u"📄";

// "📁 name" for a folder, "📄 name" for a file.
QString rowLabel(const QJsonValue &entry);

// The rules filterChildrenOf is made of, for a decoder that reads the listing another way.
// The truth value of a "dir" text ("yes", "true", a non-zero number).
bool textTruthValue(const QString &value);
// "folder/" for a folder, "" for the root.
QString childPrefix(const QString &folder);
// Whether a listed path is a direct child of the folder with this prefix.
bool isChildPath(const QString &prefix, const QString &path);
// The kept entries in the list's order: folders first, then by name ignoring case.
QJsonArray sortedChildren(QList<QJsonValue> kept);

// The folders `moving` may move into: the root ("") first, then every listed folder in the
// tree's order (each folder's subfolders under it, each level sorted as the list sorts).
// A folder is never offered itself or one of its own subfolders.
QStringList moveTargets(const QJsonArray &listing, const QString &moving);

// The paths of the listing's files, in its order.
QStringList filesOf(const QJsonArray &listing);

// What lies under `folder` in the listing, at any depth, in the listing's order: its
// folders, each listed after the folder it is in (the folder itself first), and its files.
struct Contents
{
    QStringList folders;
    QStringList files;
};
Contents contentsOf(const QString &folder, const QJsonArray &listing);

} // namespace TPScriptTree
