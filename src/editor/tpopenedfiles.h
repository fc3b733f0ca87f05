#pragma once

#include <QString>
#include <QStringList>

// The files the user reaches most: the last ones opened in the editor, and the ones they
// starred. Both are kept in the app's own settings, under keys the engine never sees.
namespace TPOpenedFiles {

inline constexpr auto RecentsKey = "tpc_recent_files";
inline constexpr auto FavouritesKey = "tpc_favourite_files";
// How many recent files are kept.
inline constexpr int RecentLimit = 20;

// Puts `path` first among the recent files, once.
void recordOpened(const QString &path);
// The recent files, the last opened first.
QStringList recents();

bool isFavourite(const QString &path);
void setFavourite(const QString &path, bool favourite);
// The starred files, in the order they were starred.
QStringList favourites();

// The file or folder `from` is now `to`: recent and starred files at or under it follow,
// keeping their places.
void moved(const QString &from, const QString &to);

} // namespace TPOpenedFiles
