#include "tpiconset.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPainter>
#include <QSet>
#include <QSvgRenderer>

QList<TPIconSlot> TPAppIconSlots()
{
    return {
        {QStringLiteral("iphone"), QStringLiteral("20x20"), 2, 40},
        {QStringLiteral("iphone"), QStringLiteral("20x20"), 3, 60},
        {QStringLiteral("iphone"), QStringLiteral("29x29"), 2, 58},
        {QStringLiteral("iphone"), QStringLiteral("29x29"), 3, 87},
        {QStringLiteral("iphone"), QStringLiteral("40x40"), 2, 80},
        {QStringLiteral("iphone"), QStringLiteral("40x40"), 3, 120},
        {QStringLiteral("iphone"), QStringLiteral("60x60"), 2, 120},
        {QStringLiteral("iphone"), QStringLiteral("60x60"), 3, 180},
        {QStringLiteral("ipad"), QStringLiteral("20x20"), 1, 20},
        {QStringLiteral("ipad"), QStringLiteral("20x20"), 2, 40},
        {QStringLiteral("ipad"), QStringLiteral("29x29"), 1, 29},
        {QStringLiteral("ipad"), QStringLiteral("29x29"), 2, 58},
        {QStringLiteral("ipad"), QStringLiteral("40x40"), 1, 40},
        {QStringLiteral("ipad"), QStringLiteral("40x40"), 2, 80},
        {QStringLiteral("ipad"), QStringLiteral("76x76"), 1, 76},
        {QStringLiteral("ipad"), QStringLiteral("76x76"), 2, 152},
        {QStringLiteral("ipad"), QStringLiteral("83.5x83.5"), 2, 167},
        {QStringLiteral("ios-marketing"), QStringLiteral("1024x1024"), 1, 1024},
    };
}

bool TPWriteAppIconSet(const QString &svgPath, const QString &folder, QString *error)
{
    QSvgRenderer renderer(svgPath);
    if (!renderer.isValid()) {
        *error = QStringLiteral("cannot read the icon %1").arg(svgPath);
        return false;
    }
    if (!QDir().mkpath(folder)) {
        *error = QStringLiteral("cannot make %1").arg(folder);
        return false;
    }
    QJsonArray images;
    QSet<int> written;
    for (const TPIconSlot &slot : TPAppIconSlots()) {
        images.append(QJsonObject{{QStringLiteral("idiom"), slot.idiom},
                                  {QStringLiteral("size"), slot.pointSize},
                                  {QStringLiteral("scale"), QStringLiteral("%1x").arg(slot.scale)},
                                  {QStringLiteral("filename"), slot.fileName()}});
        if (written.contains(slot.pixels))
            continue;
        // The phone shows icons without transparency: an opaque picture, drawn whole.
        QImage image(slot.pixels, slot.pixels, QImage::Format_RGB32);
        image.fill(Qt::white);
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        renderer.render(&painter, QRectF(0, 0, slot.pixels, slot.pixels));
        painter.end();
        const QString path = folder + u'/' + slot.fileName();
        if (!image.save(path, "PNG")) {
            *error = QStringLiteral("cannot write %1").arg(path);
            return false;
        }
        written.insert(slot.pixels);
    }
    const QJsonObject contents{
        {QStringLiteral("images"), images},
        {QStringLiteral("info"),
         QJsonObject{{QStringLiteral("author"), QStringLiteral("tp-iconset")},
                     {QStringLiteral("version"), 1}}}};
    QFile file(folder + QStringLiteral("/Contents.json"));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) ||
        file.write(QJsonDocument(contents).toJson()) < 0) {
        *error = QStringLiteral("cannot write %1").arg(file.fileName());
        return false;
    }
    return true;
}
