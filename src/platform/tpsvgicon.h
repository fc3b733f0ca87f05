#pragma once

#include <QColor>
#include <QQuickPaintedItem>
#include <QSvgRenderer>
#include <QUrl>
#include <QtQml/qqmlregistration.h>

// An icon drawn from an SVG file of the app's resources, at the item's size. It draws
// through QtSvg directly: no image plugin is looked for and no image-loading thread is
// started, which the launch would otherwise pay for its three tab icons.
class TPSvgIcon : public QQuickPaintedItem
{
    Q_OBJECT
    QML_ELEMENT
    // A "qrc:" address, a local file's, or one relative to the view that names it.
    Q_PROPERTY(QUrl source READ source WRITE setSource NOTIFY sourceChanged)
    // Whether the file was read and holds a drawing.
    Q_PROPERTY(bool valid READ isValid NOTIFY sourceChanged)
    // When set, the drawing's shape in this one colour (a tint that follows the appearance);
    // unset, the file's own colours.
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged)

public:
    explicit TPSvgIcon(QQuickItem *parent = nullptr);

    QUrl source() const { return m_source; }
    void setSource(const QUrl &source);
    bool isValid() const { return m_renderer.isValid(); }
    QColor color() const { return m_color; }
    void setColor(const QColor &color);

    void paint(QPainter *painter) override;

signals:
    void sourceChanged();
    void colorChanged();

private:
    QUrl m_source;
    QColor m_color;
    QSvgRenderer m_renderer;
};
