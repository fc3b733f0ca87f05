#pragma once

#include <QQuickItem>
#include <QString>
#include <QStringList>

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

// Whether the item is on screen: it and every item above it visible, and it has a size.
inline bool TPIsShown(const QQuickItem *item)
{
    for (const QQuickItem *it = item; it; it = it->parentItem()) {
        if (!it->isVisible())
            return false;
    }
    return item->width() > 0 && item->height() > 0;
}

// The first item named `name` at or below `root` that is on screen, or null. Delegates of
// repeaters and lists are found only this way, in the visual tree, not among QObject
// children.
inline QQuickItem *TPFindShownItem(QQuickItem *root, const QString &name)
{
    if (!root->isVisible())
        return nullptr;
    if (root->objectName() == name && TPIsShown(root))
        return root;
    for (QQuickItem *child : root->childItems()) {
        if (QQuickItem *found = TPFindShownItem(child, name))
            return found;
    }
    return nullptr;
}

// The item's centre in its window's coordinates, where a tap on it lands.
inline QPoint TPCentreOf(const QQuickItem *item)
{
    return item->mapToScene(QPointF(item->width() / 2, item->height() / 2)).toPoint();
}

// Everything a finger can use in the scene below `root` that breaks the touch rule: each
// control answers in an area at least 44x44 px, and no two such areas overlap unless one
// control holds the other (a row's buttons lie on the row). Each fault is described for the
// failure message; an empty list is a scene that keeps the rule. Controls are buttons and
// switches, text fields, sliders and enabled mouse areas that are shown, at least partly,
// in the window.
QStringList TPTouchTargetFaults(QQuickItem *root);
