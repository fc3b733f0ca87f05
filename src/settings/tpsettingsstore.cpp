#include "settings/tpsettingsstore.h"

#include "engine/tpengineapi.h"
#include "foundation/tplang.h"

#include <QSettings>

namespace {

// An integer setting tested for presence: the stored value as it stands, even 0 or out of
// range, or the fallback when it was never written.
qint64 presentIntegerOr(const QString &name, qint64 fallback)
{
    const QSettings settings;
    return settings.contains(name) ? settings.value(name).toLongLong() : fallback;
}

qint64 currentInteger(TPOptionKind kind)
{
    const TPEngineOption &option = TPSettingsStore::optionOfKind(kind);
    return presentIntegerOr(QString::fromLatin1(option.storeKey), option.fallback);
}

void store(const QString &name, const QVariant &value)
{
    QSettings().setValue(name, value);
}

QStringList switchField(const char *TPEngineOption::*field)
{
    QStringList values;
    for (const TPEngineOption &option : TPEngineOptions) {
        if (option.kind == TPOptionKind::Switch)
            values.append(QString::fromLatin1(option.*field));
    }
    return values;
}

} // namespace

const TPEngineOption &TPSettingsStore::optionOfKind(TPOptionKind kind)
{
    for (const TPEngineOption &option : TPEngineOptions) {
        if (option.kind == kind)
            return option;
    }
    Q_UNREACHABLE();
}

QString TPSettingsStore::keyOf(TPOptionKind kind)
{
    return QString::fromLatin1(optionOfKind(kind).storeKey);
}

QStringList TPSettingsStore::switchKeys()
{
    return switchField(&TPEngineOption::storeKey);
}

QStringList TPSettingsStore::switchTitleKeys()
{
    return switchField(&TPEngineOption::titleKey);
}

bool TPSettingsStore::boolForKey(const QString &name)
{
    return QSettings().value(name).toBool();
}

bool TPSettingsStore::isDebugTouchOn()
{
    return boolForKey(QString::fromLatin1(TPDebugTouchKey));
}

quint32 TPSettingsStore::currentTouchColorRGB()
{
    // Stored zero-extended; read back as its low 32 bits.
    return quint32(currentInteger(TPOptionKind::TouchColor));
}

qint64 TPSettingsStore::currentTouchSize()
{
    return currentInteger(TPOptionKind::TouchSize);
}

qint64 TPSettingsStore::currentTouchOpacity()
{
    return currentInteger(TPOptionKind::TouchOpacity);
}

qint64 TPSettingsStore::currentToastPosition()
{
    return currentInteger(TPOptionKind::ToastPosition);
}

QVariantMap TPSettingsStore::settingsDocument()
{
    QVariantMap document;
    for (const TPEngineOption &option : TPEngineOptions) {
        const QString name = QString::fromLatin1(option.storeKey);
        switch (option.kind) {
        case TPOptionKind::Switch:
            document.insert(name, boolForKey(name));
            break;
        case TPOptionKind::TouchColor:
            document.insert(name, currentTouchColorRGB());
            break;
        case TPOptionKind::ToastPosition:
        case TPOptionKind::TouchSize:
        case TPOptionKind::TouchOpacity:
            document.insert(name, currentInteger(option.kind));
            break;
        }
    }
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
    store(keyOf(TPOptionKind::ToastPosition), segment);
}

void TPSettingsStore::storeTouchColorRGB(quint32 rgb)
{
    // Zero-extended, so a colour is never stored as a negative number.
    store(keyOf(TPOptionKind::TouchColor), qint64(rgb));
}

void TPSettingsStore::storeTouchSize(qint64 size)
{
    store(keyOf(TPOptionKind::TouchSize), size);
}

void TPSettingsStore::storeTouchOpacity(qint64 opacity)
{
    store(keyOf(TPOptionKind::TouchOpacity), opacity);
}

QString TPSettingsStore::storeLanguageSegment(int segment)
{
    const QString code = segment == 1 ? QStringLiteral("en") : QStringLiteral("vi");
    store(QLatin1String(TPLangKey), code);
    return code;
}
