#include "settings/tpswatchcell.h"

#include "foundation/tplang.h"
#include "platform/tptheme.h"

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

QColor TPSwatchCell::outlineColor(const QColor &fill)
{
    // The contrast a control's edge needs with what is around it (WCAG 2, non-text).
    constexpr double kVisibleEdge = 3.0;
    const TPTheme::Palette &palette = TPTheme::shared()->palette();
    return TPTheme::contrast(fill, palette.groupedCell) < kVisibleEdge ? palette.sectionHeader
                                                                       : QColor(Qt::transparent);
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

QColor TPSwatchCell::checkColor(const QColor &fill)
{
    const QColor black(Qt::black);
    const QColor white(Qt::white);
    return TPTheme::contrast(fill, white) >= TPTheme::contrast(fill, black) ? white : black;
}

QVariantList TPSwatchCell::buttons() const
{
    // The presets' names, in their order, for a screen reader.
    static const char *const nameKeys[] = {"swatch_red",   "swatch_orange", "swatch_yellow",
                                           "swatch_green", "swatch_blue",   "swatch_purple",
                                           "swatch_white", "swatch_black"};
    QVariantList result;
    for (qsizetype i = 0; i < _buttons.size(); ++i) {
        const Button &button = _buttons.at(i);
        const bool selected = button.borderWidth == 3;
        result.append(
            QVariantMap{{QStringLiteral("color"), button.color},
                        {QStringLiteral("borderWidth"), button.borderWidth},
                        {QStringLiteral("borderColor"), button.borderColor},
                        {QStringLiteral("outlineColor"), outlineColor(button.color)},
                        {QStringLiteral("selected"), selected},
                        {QStringLiteral("checkColor"), checkColor(button.color)},
                        {QStringLiteral("accessibleName"),
                         i < qsizetype(std::size(nameKeys)) ? TPL(nameKeys[i]) : QString()}});
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
