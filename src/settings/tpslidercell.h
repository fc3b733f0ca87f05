#pragma once

#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

#include <functional>

// A titled slider whose read-out follows the finger; the whole-number value is reported
// once, when the finger lifts (inside or outside the slider). A cancelled touch reports
// nothing.
class TPSliderCell : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Owned by the settings screen")
    Q_PROPERTY(QString title READ title NOTIFY configured)
    Q_PROPERTY(QString valueText READ valueText NOTIFY valueTextChanged)
    Q_PROPERTY(float minimum READ minimum NOTIFY configured)
    Q_PROPERTY(float maximum READ maximum NOTIFY configured)
    Q_PROPERTY(float value READ value NOTIFY valueChanged)

public:
    explicit TPSliderCell(QObject *parent = nullptr);

    // Rounds halves away from zero, as both the read-out and the report do.
    static qint64 roundedValue(float value);

    void configureWithTitle(const QString &title, float minimum, float maximum, qint64 value,
                            const QString &suffix = QString());
    void setOnChanged(std::function<void(qint64)> onChanged) { _onChanged = std::move(onChanged); }

    QString title() const { return _title; }
    QString valueText() const { return _valueText; }
    QString suffix() const { return _suffix; }
    float minimum() const { return _minimum; }
    float maximum() const { return _maximum; }
    float value() const { return _value; }
    // The whole number the read-out shows: under the finger while it drags, else the
    // value.
    qint64 shownValue() const { return _shownValue; }

public slots:
    // The slider moved to `value` under the finger.
    void onSliderDragging(float value);
    // The finger lifted with the slider at `value`.
    void onSliderReleased(float value);

signals:
    void configured();
    void valueTextChanged();
    void valueChanged();

private:
    void setSliderValue(float value);
    void showValue(qint64 value);

    QString _title;
    QString _valueText;
    QString _suffix;
    float _minimum = 0;
    float _maximum = 1;
    float _value = 0;
    qint64 _shownValue = 0;
    std::function<void(qint64)> _onChanged;
};
