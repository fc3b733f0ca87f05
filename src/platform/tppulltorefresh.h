#pragma once

#include <QObject>
#include <QtQml/qqmlregistration.h>

// Pull to refresh: a list dragged down past its top by PullDistance and let go asks for a
// refresh, once per pull. The view reports the drag; this decides.
class TPPullToRefresh : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Owned by a list screen")

public:
    // How far past its top the list must be pulled, in points.
    static constexpr qreal PullDistance = 64;

    using QObject::QObject;

    bool pulledFarEnough() const { return m_pulledFarEnough; }

public slots:
    // While the finger drags: `overshoot` is how far the list is past its top (negative
    // when pulled down, as Flickable's verticalOvershoot).
    void dragMoved(qreal overshoot);
    // The finger let go.
    void dragEnded();

signals:
    void refreshRequested();

private:
    bool m_pulledFarEnough = false;
};
