#include "tpsettingsstore.h"

#include "tpengineapi.h"
#include "tplang.h"

#include <QSettings>

namespace {

constexpr auto kAlertError = "tp_alert_error";
constexpr auto kVibrateError = "tp_vibrate_error";
constexpr auto kToastStartStop = "tp_toast_startstop";
constexpr auto kVibrateStartStop = "tp_vibrate_startstop";
constexpr auto kDebugTouch = "tp_debug_touch";
constexpr auto kToastPos = "tp_toast_pos";
constexpr auto kTouchColor = "tp_touch_color";
constexpr auto kTouchSize = "tp_touch_size";
constexpr auto kTouchOpacity = "tp_touch_opacity";

QString key(const char *name)
{
    return QString::fromLatin1(name);
}

// An integer setting tested for presence: the stored value as it stands, even 0 or out of
// range, or the fallback when it was never written.
qint64 presentIntegerOr(const char *name, qint64 fallback)
{
    const QSettings settings;
    return settings.contains(key(name)) ? settings.value(key(name)).toLongLong() : fallback;
}

void store(const QString &name, const QVariant &value)
{
    QSettings().setValue(name, value);
}

} // namespace

QStringList TPSettingsStore::switchKeys()
{
    return {key(kAlertError), key(kVibrateError), key(kToastStartStop), key(kVibrateStartStop),
            key(kDebugTouch)};
}

bool TPSettingsStore::boolForKey(const QString &name)
{
    return QSettings().value(name).toBool();
}

bool TPSettingsStore::isDebugTouchOn()
{
    return boolForKey(key(kDebugTouch));
}

quint32 TPSettingsStore::currentTouchColorRGB()
{
    // Stored zero-extended; read back as its low 32 bits.
    return quint32(presentIntegerOr(kTouchColor, DefaultTouchColorRGB));
}

qint64 TPSettingsStore::currentTouchSize()
{
    return presentIntegerOr(kTouchSize, DefaultTouchSize);
}

qint64 TPSettingsStore::currentTouchOpacity()
{
    return presentIntegerOr(kTouchOpacity, DefaultTouchOpacity);
}

qint64 TPSettingsStore::currentToastPosition()
{
    return QSettings().value(key(kToastPos)).toLongLong();
}

QVariantMap TPSettingsStore::settingsDocument()
{
    QVariantMap document;
    for (const QString &switchKey : switchKeys())
        document.insert(switchKey, boolForKey(switchKey));
    document.insert(key(kToastPos), currentToastPosition());
    document.insert(key(kTouchColor), currentTouchColorRGB());
    document.insert(key(kTouchSize), currentTouchSize());
    document.insert(key(kTouchOpacity), currentTouchOpacity());
    return document;
}

void TPSettingsStore::postAllSettings()
{
    TPEngineAPI::postSettings(settingsDocument());
}

void TPSettingsStore::storeSwitch(const QString &switchKey, bool on)
{
    store(switchKey, on);
}

void TPSettingsStore::storeToastPosition(qint64 segment)
{
    store(key(kToastPos), segment);
}

void TPSettingsStore::storeTouchColorRGB(quint32 rgb)
{
    // Zero-extended, so a colour is never stored as a negative number.
    store(key(kTouchColor), qint64(rgb));
}

void TPSettingsStore::storeTouchSize(qint64 size)
{
    store(key(kTouchSize), size);
}

void TPSettingsStore::storeTouchOpacity(qint64 opacity)
{
    store(key(kTouchOpacity), opacity);
}

QString TPSettingsStore::storeLanguageSegment(int segment)
{
    const QString code = segment == 1 ? QStringLiteral("en") : QStringLiteral("vi");
    store(QLatin1String(TPLangKey), code);
    return code;
}
