#pragma once

#include <QColor>
#include <QList>
#include <QObject>
#include <QVariantList>
#include <QtQml/qqmlregistration.h>

#include <functional>

// A 0xRRGGBB value as an opaque colour; bits above the lowest 24 are ignored.
QColor TPColorFromRGB(quint32 rgb);

// The row of eight round colour swatches. A tap selects a swatch and reports its colour.
// The selection is only what the borders show: the cell keeps no selected value.
class TPSwatchCell : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Owned by the settings screen")
    Q_PROPERTY(QVariantList buttons READ buttons NOTIFY buttonsChanged)

public:
    // The look of one swatch: its fill, and its border (3 points in the label colour when
    // selected, 1 point in the separator colour otherwise).
    struct Button
    {
        QColor color;
        int borderWidth = 1;
        QColor borderColor;
    };

    static constexpr int SwatchSize = 32;
    // The theme's label and separator colours, in the current appearance.
    static QColor labelColor();
    static QColor separatorColor();
    // A ring drawn just outside a swatch whose fill barely stands out from the cell (black in
    // the dark, white and yellow in the light), so that it can still be seen and aimed at;
    // transparent for the others. The border stays as it is.
    static QColor outlineColor(const QColor &fill);
    // The check mark drawn on the selected swatch: black or white, whichever stands out
    // more from its fill. Unlike the rings, it cannot be taken for a contrast ring.
    static QColor checkColor(const QColor &fill);

    explicit TPSwatchCell(QObject *parent = nullptr);

    QList<quint32> presetRGBs() const { return _presetRGBs; }
    QList<Button> buttonStates() const { return _buttons; }
    // For the view: one map per swatch with "color", "borderWidth", "borderColor",
    // "outlineColor", "selected", "checkColor" and "accessibleName" (the colour's name in
    // the current language).
    QVariantList buttons() const;

    // Marks every swatch whose colour equals `rgb` exactly; reports nothing.
    void selectRGB(quint32 rgb);
    void setOnPick(std::function<void(quint32)> onPick) { _onPick = std::move(onPick); }

public slots:
    void onSwatchTapped(int tag);

signals:
    void buttonsChanged();

private:
    QList<quint32> _presetRGBs;
    QList<Button> _buttons;
    std::function<void(quint32)> _onPick;
};
