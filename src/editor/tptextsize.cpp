#include "editor/tptextsize.h"

#include <QSettings>

#include <algorithm>
#include <cmath>

TPTextSize::TPTextSize(QObject *parent) : QObject(parent), m_step(storedStep()) {}

int TPTextSize::storedStep()
{
    bool ok = false;
    const int stored = QSettings().value(QLatin1String(SettingsKey)).toInt(&ok);
    return ok && stored >= 0 && stored < int(Points.size()) ? stored : DefaultStep;
}

void TPTextSize::setStep(int step)
{
    step = std::clamp(step, 0, int(Points.size()) - 1);
    if (step == m_step)
        return;
    m_step = step;
    QSettings().setValue(QLatin1String(SettingsKey), m_step);
    emit changed();
}

void TPTextSize::beginPinch()
{
    m_pinchStartStep = m_step;
}

void TPTextSize::pinch(qreal scale)
{
    if (!(scale > 0))
        return;
    // Only a whole PinchPerStep makes a step (a hair below it counts, for rounding).
    const qreal spread = std::log(scale) / std::log(PinchPerStep);
    const auto steps = int(std::trunc(spread + (spread > 0 ? 1e-9 : -1e-9)));
    setStep(m_pinchStartStep + steps);
}
