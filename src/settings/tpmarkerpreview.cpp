#include "settings/tpmarkerpreview.h"

#include "foundation/tplang.h"
#include "foundation/tpnotificationcenter.h"
#include "settings/tpsettingsstore.h"
#include "settings/tpslidercell.h"
#include "settings/tpswatchcell.h"

namespace {

// Above and below the largest marker.
constexpr qreal kMargin = 12;

} // namespace

TPMarkerPreview::TPMarkerPreview(QObject *parent)
    : QObject(parent), m_color(TPColorFromRGB(TPSettingsStore::currentTouchColorRGB())),
      m_size(TPSettingsStore::currentTouchSize()),
      m_opacityPercent(TPSettingsStore::currentTouchOpacity())
{
    // The accessible name is in the app's language.
    connect(TPNotificationCenter::defaultCenter(), &TPNotificationCenter::TPLangChanged, this,
            &TPMarkerPreview::changed);
}

void TPMarkerPreview::follow(TPSliderCell *size, TPSliderCell *opacity)
{
    connect(size, &TPSliderCell::valueTextChanged, this,
            [this, size] { setSize(size->shownValue()); });
    connect(opacity, &TPSliderCell::valueTextChanged, this,
            [this, opacity] { setOpacityPercent(opacity->shownValue()); });
}

void TPMarkerPreview::setColorRGB(quint32 rgb)
{
    const QColor color = TPColorFromRGB(rgb);
    if (color == m_color)
        return;
    m_color = color;
    emit changed();
}

void TPMarkerPreview::setSize(qint64 size)
{
    if (size == m_size)
        return;
    m_size = size;
    emit changed();
}

void TPMarkerPreview::setOpacityPercent(qint64 percent)
{
    if (percent == m_opacityPercent)
        return;
    m_opacityPercent = percent;
    emit changed();
}

qreal TPMarkerPreview::areaHeight() const
{
    return qreal(TPSettingsStore::optionOfKind(TPOptionKind::TouchSize).maximum) + 2 * kMargin;
}

QString TPMarkerPreview::accessibleName() const
{
    return TPL("marker_preview").arg(m_size).arg(m_opacityPercent);
}
