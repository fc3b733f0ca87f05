#include "tpswatchcell.h"

#include "tptheme.h"

#include <QVariantMap>

QColor TPColorFromRGB(quint32 rgb)
{
    return QColor::fromRgbF(float(((rgb >> 16) & 0xFF) / 255.0), float(((rgb >> 8) & 0xFF) / 255.0),
                            float((rgb & 0xFF) / 255.0), 1.0f);
}

QColor TPSwatchCell::labelColor()
{
    return TPTheme::shared()->label();
}

QColor TPSwatchCell::separatorColor()
{
    return TPTheme::shared()->separator();
}

TPSwatchCell::TPSwatchCell(QObject *parent)
    : QObject(parent),
      _presetRGBs({0xFF3B30, 0xFF9500, 0xFFCC00, 0x34C759, 0x007AFF, 0xAF52DE, 0xFFFFFF, 0x000000})
{
    for (const quint32 rgb : std::as_const(_presetRGBs))
        _buttons.append({TPColorFromRGB(rgb), 1, separatorColor()});
    // The borders follow the light or dark appearance.
    connect(TPTheme::shared(), &TPTheme::paletteChanged, this, [this] {
        for (Button &button : _buttons)
            button.borderColor = button.borderWidth == 3 ? labelColor() : separatorColor();
        emit buttonsChanged();
    });
}

QVariantList TPSwatchCell::buttons() const
{
    QVariantList result;
    for (const Button &button : _buttons) {
        result.append(QVariantMap{{QStringLiteral("color"), button.color},
                                  {QStringLiteral("borderWidth"), button.borderWidth},
                                  {QStringLiteral("borderColor"), button.borderColor}});
    }
    return result;
}

void TPSwatchCell::selectRGB(quint32 rgb)
{
    for (qsizetype i = 0; i < _buttons.size(); ++i) {
        const bool selected = _presetRGBs.at(i) == rgb;
        _buttons[i].borderWidth = selected ? 3 : 1;
        _buttons[i].borderColor = selected ? labelColor() : separatorColor();
    }
    emit buttonsChanged();
}

void TPSwatchCell::onSwatchTapped(int tag)
{
    if (tag < 0 || tag >= _presetRGBs.size())
        return;
    const quint32 rgb = _presetRGBs.at(tag);
    selectRGB(rgb);
    if (_onPick)
        _onPick(rgb);
}
