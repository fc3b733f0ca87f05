#include "editor/tpopenedfiles.h"

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

} // namespace TPOpenedFiles
