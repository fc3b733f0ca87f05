#pragma once

#include <QQuickItem>
#include <QString>

// Finding and touching items of a Qt Quick scene in view tests.

// The item named `name` at or below `root`, or null.
inline QQuickItem *TPFindItem(QQuickItem *root, const QString &name)
{
    if (root->objectName() == name)
        return root;
    for (QQuickItem *child : root->childItems()) {
        if (QQuickItem *found = TPFindItem(child, name))
            return found;
    }
    return nullptr;
}

// The item's centre in its window's coordinates, where a tap on it lands.
inline QPoint TPCentreOf(const QQuickItem *item)
{
    return item->mapToScene(QPointF(item->width() / 2, item->height() / 2)).toPoint();
}
