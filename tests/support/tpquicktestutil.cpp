#include "tpquicktestutil.h"

#include <QQuickWindow>

namespace {

// The smallest area a fingertip hits reliably, in px, with room for rounding in layouts.
constexpr qreal kTouchSide = 44 - 0.5;

bool isTouchControl(const QQuickItem *item)
{
    // A mouse area's own "enabled" hides the item's: it may ignore taps in an enabled item.
    if (item->inherits("QQuickMouseArea"))
        return item->isEnabled() && item->property("enabled").toBool();
    return item->inherits("QQuickAbstractButton") || item->inherits("QQuickTextInput") ||
           item->inherits("QQuickSlider");
}

// Whether the item is drawn: it and every item above it visible and not transparent.
bool isDrawn(const QQuickItem *item)
{
    for (const QQuickItem *it = item; it; it = it->parentItem()) {
        if (!it->isVisible() || it->opacity() <= 0)
            return false;
    }
    return true;
}

// The part of the item's area that shows: cut by the window and by every clipping item
// above it.
QRectF shownArea(const QQuickItem *item, const QRectF &sceneArea)
{
    QRectF shown = sceneArea.intersected(QRectF(QPointF(0, 0), item->window()->size()));
    for (const QQuickItem *it = item->parentItem(); it; it = it->parentItem()) {
        if (it->clip())
            shown = shown.intersected(it->mapRectToScene(QRectF(0, 0, it->width(), it->height())));
    }
    return shown;
}

struct Target
{
    QQuickItem *item;
    QRectF area;
    QRectF shown;
};

void collect(QQuickItem *item, QList<Target> &targets)
{
    if (!isDrawn(item))
        return;
    if (isTouchControl(item)) {
        const QRectF area = item->mapRectToScene(QRectF(0, 0, item->width(), item->height()));
        const QRectF shown = shownArea(item, area);
        // A backdrop that takes every tap around a sheet or an alert hides all drawn before
        // it; it is not a control itself.
        if (area.contains(QRectF(QPointF(0, 0), item->window()->size())))
            targets.clear();
        else if (shown.width() > 0 && shown.height() > 0)
            targets.append({item, area, shown});
    }
    for (QQuickItem *child : item->childItems())
        collect(child, targets);
}

QString describe(const Target &target)
{
    const QString name = target.item->objectName();
    return QStringLiteral("%1 \"%2\" at %3,%4 %5x%6")
        .arg(QString::fromLatin1(target.item->metaObject()->className()),
             name.isEmpty() ? target.item->property("text").toString() : name)
        .arg(target.area.x())
        .arg(target.area.y())
        .arg(target.area.width())
        .arg(target.area.height());
}

} // namespace

QStringList TPTouchTargetFaults(QQuickItem *root)
{
    QList<Target> targets;
    collect(root, targets);
    QStringList faults;
    for (qsizetype i = 0; i < targets.size(); ++i) {
        const Target &target = targets.at(i);
        if (target.area.width() < kTouchSide || target.area.height() < kTouchSide)
            faults.append(QStringLiteral("too small: ") + describe(target));
        for (qsizetype j = i + 1; j < targets.size(); ++j) {
            const Target &other = targets.at(j);
            if (target.item->isAncestorOf(other.item) || other.item->isAncestorOf(target.item))
                continue;
            const QRectF common = target.shown.intersected(other.shown);
            if (common.width() > 0.5 && common.height() > 0.5)
                faults.append(QStringLiteral("overlap: ") + describe(target) +
                              QStringLiteral(" and ") + describe(other));
        }
    }
    return faults;
}
