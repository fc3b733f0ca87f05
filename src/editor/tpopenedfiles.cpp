#include "editor/tpopenedfiles.h"

#include "foundation/tppathrules.h"

#include <QSettings>

namespace TPOpenedFiles {

void recordOpened(const QString &path)
{
    QStringList list = recents();
    list.removeAll(path);
    list.prepend(path);
    while (list.size() > RecentLimit)
        list.removeLast();
    QSettings().setValue(QLatin1String(RecentsKey), list);
}

QStringList recents()
{
    return QSettings().value(QLatin1String(RecentsKey)).toStringList();
}

bool isFavourite(const QString &path)
{
    return favourites().contains(path);
}

void setFavourite(const QString &path, bool favourite)
{
    QStringList list = favourites();
    if (list.contains(path) == favourite)
        return;
    if (favourite)
        list.append(path);
    else
        list.removeAll(path);
    QSettings().setValue(QLatin1String(FavouritesKey), list);
}

QStringList favourites()
{
    return QSettings().value(QLatin1String(FavouritesKey)).toStringList();
}

namespace {

void movePaths(const char *key, const QString &from, const QString &to)
{
    QSettings settings;
    QStringList paths = settings.value(QLatin1String(key)).toStringList();
    bool changed = false;
    for (QString &path : paths) {
        if (const auto carried = TPMovedPath(path, from, to)) {
            path = *carried;
            changed = true;
        }
    }
    if (changed) {
        paths.removeDuplicates();
        settings.setValue(QLatin1String(key), paths);
    }
}

} // namespace

void moved(const QString &from, const QString &to)
{
    movePaths(RecentsKey, from, to);
    movePaths(FavouritesKey, from, to);
}

} // namespace TPOpenedFiles
