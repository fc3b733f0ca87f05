#include "platform/tpsvgicon.h"

#include <QImage>
#include <QPainter>
#include <QQmlContext>

#include <algorithm>

TPSvgIcon::TPSvgIcon(QQuickItem *parent) : QQuickPaintedItem(parent)
{
    setAntialiasing(true);
}

void TPSvgIcon::setSource(const QUrl &source)
{
    if (m_source == source)
        return;
    m_source = source;
    // A view names its own icons relative to itself, as it would for an Image.
    const QQmlContext *context = qmlContext(this);
    const QUrl address = source.isRelative() && context ? context->resolvedUrl(source) : source;
    const QString path = address.scheme() == QLatin1String("qrc")
                             ? QLatin1Char(':') + address.path()
                             : address.toLocalFile();
    // An unreadable file leaves an empty renderer: the icon draws nothing.
    m_renderer.load(path);
    emit sourceChanged();
    update();
}

void TPSvgIcon::setColor(const QColor &color)
{
    if (m_color == color)
        return;
    m_color = color;
    emit colorChanged();
    update();
}

void TPSvgIcon::paint(QPainter *painter)
{
    if (!m_renderer.isValid())
        return;
    const QRectF bounds(0, 0, width(), height());
    if (!m_color.isValid()) {
        m_renderer.render(painter, bounds);
        return;
    }
    // Drawn alone first, then filled with the colour wherever the drawing covers, keeping
    // its edges' coverage; at the painter's scale, so a dense screen gets a sharp shape.
    const qreal scale = std::max<qreal>(1, painter->deviceTransform().m11());
    QImage shape((bounds.size() * scale).toSize(), QImage::Format_ARGB32_Premultiplied);
    shape.setDevicePixelRatio(scale);
    shape.fill(Qt::transparent);
    QPainter shapePainter(&shape);
    m_renderer.render(&shapePainter, bounds);
    shapePainter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    shapePainter.fillRect(bounds, m_color);
    shapePainter.end();
    painter->drawImage(bounds, shape);
}
