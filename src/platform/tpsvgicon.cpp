#include "platform/tpsvgicon.h"

#include <QPainter>

TPSvgIcon::TPSvgIcon(QQuickItem *parent) : QQuickPaintedItem(parent)
{
    setAntialiasing(true);
}

void TPSvgIcon::setSource(const QUrl &source)
{
    if (m_source == source)
        return;
    m_source = source;
    const QString path = source.scheme() == QLatin1String("qrc") ? QLatin1Char(':') + source.path()
                                                                 : source.toLocalFile();
    // An unreadable file leaves an empty renderer: the icon draws nothing.
    m_renderer.load(path);
    emit sourceChanged();
    update();
}

void TPSvgIcon::paint(QPainter *painter)
{
    if (m_renderer.isValid())
        m_renderer.render(painter, QRectF(0, 0, width(), height()));
}
