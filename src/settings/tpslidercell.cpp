#include "settings/tpslidercell.h"

#include <cmath>

TPSliderCell::TPSliderCell(QObject *parent) : QObject(parent) {}

qint64 TPSliderCell::roundedValue(float value)
{
    return qint64(std::llround(double(value)));
}

void TPSliderCell::configureWithTitle(const QString &title, float minimum, float maximum,
                                      qint64 value, const QString &suffix)
{
    _title = title;
    _suffix = suffix;
    _minimum = minimum;
    _maximum = maximum;
    emit configured();
    // Like the platform's slider, the value is kept within the range.
    setSliderValue(std::clamp(float(value), _minimum, _maximum));
    showValue(value);
}

void TPSliderCell::setSliderValue(float value)
{
    if (_value == value)
        return;
    _value = value;
    emit valueChanged();
}

void TPSliderCell::showValue(qint64 value)
{
    _shownValue = value;
    const QString text = QString::number(value) + _suffix;
    if (_valueText == text)
        return;
    _valueText = text;
    emit valueTextChanged();
}

void TPSliderCell::onSliderDragging(float value)
{
    showValue(roundedValue(value));
}

void TPSliderCell::onSliderReleased(float value)
{
    const qint64 whole = roundedValue(value);
    setSliderValue(float(whole));
    showValue(whole);
    if (_onChanged)
        _onChanged(whole);
}
