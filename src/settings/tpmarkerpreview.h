#pragma once

#include <QColor>
#include <QObject>
#include <QtQml/qqmlregistration.h>

class TPSliderCell;

// The touch marker as the engine will draw it with the settings shown: its colour, its
// size in points and its opacity. It follows the size and opacity sliders as they move, so
// the marker changes under the finger, before the value is stored on release.
class TPMarkerPreview : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Owned by the settings screen")
    Q_PROPERTY(QColor color READ color NOTIFY changed)
    Q_PROPERTY(qreal diameter READ diameter NOTIFY changed)
    Q_PROPERTY(qreal opacity READ opacity NOTIFY changed)
    // The preview's room: the largest marker with a margin above and below, so that rows
    // below it stay where they are whatever the size.
    Q_PROPERTY(qreal areaHeight READ areaHeight CONSTANT)
    Q_PROPERTY(QString accessibleName READ accessibleName NOTIFY changed)

public:
    explicit TPMarkerPreview(QObject *parent = nullptr);

    // Follows the two sliders' values as they move.
    void follow(TPSliderCell *size, TPSliderCell *opacity);
    void setColorRGB(quint32 rgb);

    QColor color() const { return m_color; }
    qreal diameter() const { return qreal(m_size); }
    // The stored percentage as a fraction.
    qreal opacity() const { return qreal(m_opacityPercent) / 100; }
    qreal areaHeight() const;
    QString accessibleName() const;

signals:
    void changed();

private:
    void setSize(qint64 size);
    void setOpacityPercent(qint64 percent);

    QColor m_color;
    qint64 m_size = 0;
    qint64 m_opacityPercent = 0;
};
