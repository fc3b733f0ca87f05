#pragma once

#include <QList>
#include <QString>

// One picture of the phone's app icon set: the point size and scale it is for, and its
// pixel size.
struct TPIconSlot
{
    QString idiom; // "iphone", "ipad" or "ios-marketing"
    QString pointSize;
    int scale = 1;
    int pixels = 0;
    QString fileName() const { return QStringLiteral("AppIcon-%1.png").arg(pixels); }
};

// The pictures an iPhone and iPad app icon set holds.
QList<TPIconSlot> TPAppIconSlots();

// Renders the vector icon at every slot's size into `folder` as PNG files, with the asset
// catalog's Contents.json listing them. False with `error` set when the icon cannot be read
// or a file cannot be written.
bool TPWriteAppIconSet(const QString &svgPath, const QString &folder, QString *error);
