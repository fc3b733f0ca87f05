#include "tpiconoutline.h"

#include <QPaintDevice>
#include <QPaintEngine>
#include <QPainter>
#include <QPainterPathStroker>
#include <QSvgRenderer>

namespace {

// A paint engine that draws nothing and keeps, for every shape painted, the area it covers:
// the shape itself when it is filled, the outline of its stroke when it is stroked, both
// in the drawing's coordinates. Each area is filled alone, as the painter fills each shape.
class TPCoveredAreas : public QPaintEngine
{
public:
    TPCoveredAreas() : QPaintEngine(AllFeatures) {}

    bool begin(QPaintDevice *) override { return true; }
    bool end() override { return true; }
    Type type() const override { return User; }

    void updateState(const QPaintEngineState &state) override
    {
        if (state.state() & DirtyPen)
            m_pen = state.pen();
        if (state.state() & DirtyBrush)
            m_brush = state.brush();
        if (state.state() & DirtyTransform)
            m_transform = state.transform();
    }

    void drawPath(const QPainterPath &path) override { cover(path, true); }

    void drawPolygon(const QPointF *points, int pointCount, PolygonDrawMode mode) override
    {
        if (pointCount < 1)
            return;
        QPainterPath path(points[0]);
        for (int i = 1; i < pointCount; ++i)
            path.lineTo(points[i]);
        if (mode != PolylineMode)
            path.closeSubpath();
        path.setFillRule(mode == WindingMode ? Qt::WindingFill : Qt::OddEvenFill);
        cover(path, mode != PolylineMode);
    }

    // The icons hold no pictures.
    void drawPixmap(const QRectF &, const QPixmap &, const QRectF &) override {}

    const QList<QPainterPath> &areas() const { return m_areas; }

private:
    void cover(const QPainterPath &path, bool fillable)
    {
        if (fillable && m_brush.style() != Qt::NoBrush)
            m_areas.append(m_transform.map(path));
        if (m_pen.style() != Qt::NoPen)
            m_areas.append(m_transform.map(QPainterPathStroker(m_pen).createStroke(path)));
    }

    QPen m_pen = Qt::NoPen;
    QBrush m_brush = Qt::NoBrush;
    QTransform m_transform;
    QList<QPainterPath> m_areas;
};

// A device of the drawing's size whose painting goes to TPCoveredAreas.
class TPCoveredAreasDevice : public QPaintDevice
{
public:
    explicit TPCoveredAreasDevice(QSize size) : m_size(size) {}

    QPaintEngine *paintEngine() const override { return &m_engine; }
    const QList<QPainterPath> &areas() const { return m_engine.areas(); }

protected:
    int metric(PaintDeviceMetric metric) const override
    {
        switch (metric) {
        case PdmWidth:
            return m_size.width();
        case PdmHeight:
            return m_size.height();
        case PdmDpiX:
        case PdmDpiY:
        case PdmPhysicalDpiX:
        case PdmPhysicalDpiY:
            return 72;
        case PdmDepth:
            return 32;
        case PdmDevicePixelRatio:
            return 1;
        case PdmDevicePixelRatioScaled:
            return int(devicePixelRatioFScale());
        default:
            return 0;
        }
    }

private:
    QSize m_size;
    mutable TPCoveredAreas m_engine;
};

// A coordinate with at most three decimals and no trailing zeros: a thousandth of a unit
// of a 28-unit icon is far below a pixel at any scale the app draws it.
QByteArray coordinate(qreal value)
{
    QByteArray text = QByteArray::number(value, 'f', 3);
    while (text.endsWith('0'))
        text.chop(1);
    if (text.endsWith('.'))
        text.chop(1);
    return text == "-0" ? QByteArray("0") : text;
}

QByteArray point(qreal x, qreal y)
{
    return coordinate(x) + ' ' + coordinate(y);
}

// SVG path data of lines and cubic curves, each subpath closed.
QByteArray pathData(const QPainterPath &path)
{
    QByteArray data;
    for (int i = 0; i < path.elementCount(); ++i) {
        const QPainterPath::Element element = path.elementAt(i);
        if (element.isMoveTo()) {
            data += (i == 0 ? "M" : "ZM") + point(element.x, element.y);
        } else if (element.isLineTo()) {
            data += 'L' + point(element.x, element.y);
        } else if (element.isCurveTo() && i + 2 < path.elementCount()) {
            const QPainterPath::Element second = path.elementAt(i + 1);
            const QPainterPath::Element end = path.elementAt(i + 2);
            data += 'C' + point(element.x, element.y) + ' ' + point(second.x, second.y) + ' ' +
                    point(end.x, end.y);
            i += 2;
        }
    }
    return data.isEmpty() ? data : data + 'Z';
}

} // namespace

std::optional<QByteArray> TPOutlineIcon(const QString &drawnSvgPath, const QString &sourceName,
                                        QString *error)
{
    QSvgRenderer drawing(drawnSvgPath);
    if (!drawing.isValid()) {
        *error = QStringLiteral("cannot read the icon %1").arg(drawnSvgPath);
        return std::nullopt;
    }
    const QRectF viewBox = drawing.viewBoxF();
    const QSize size = drawing.defaultSize();
    TPCoveredAreasDevice device(size);
    {
        QPainter painter(&device);
        drawing.render(&painter, viewBox);
    }
    QByteArray svg =
        "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + QByteArray::number(size.width()) +
        "\" height=\"" + QByteArray::number(size.height()) + "\" viewBox=\"" +
        point(viewBox.x(), viewBox.y()) + ' ' + point(viewBox.width(), viewBox.height()) + "\">\n";
    svg += "  <!-- The outline of " + sourceName.toUtf8() +
           ", made by tp-iconoutline.\n       Edit that drawing and run "
           "scripts/make-outline-icons.sh. -->\n";
    for (const QPainterPath &area : device.areas()) {
        const QByteArray data = pathData(area);
        if (data.isEmpty())
            continue;
        const QByteArray rule =
            area.fillRule() == Qt::OddEvenFill ? " fill-rule=\"evenodd\"" : QByteArray();
        svg += "  <path fill=\"#007AFF\"" + rule + " d=\"" + data + "\"/>\n";
    }
    svg += "</svg>\n";
    return svg;
}
