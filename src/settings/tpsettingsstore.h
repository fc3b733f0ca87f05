#pragma once

#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <array>

// What an engine option holds, and so which control of the settings screen sets it.
enum class TPOptionKind { Switch, ToastPosition, TouchColor, TouchSize, TouchOpacity };

// One engine option: its store key (also its member name in the settings document), the
// TPL key of its row's title, its kind, and the value read when it was never stored.
struct TPEngineOption
{
    const char *storeKey;
    const char *titleKey;
    TPOptionKind kind;
    qint64 fallback;
    // The range a slider offers, and the unit shown after its value; none for the others.
    qint64 minimum;
    qint64 maximum;
    const char *unit;
};

// Every engine option, once: the switches in the order the settings screen shows them,
// then the toast position and the touch marker.
inline constexpr std::array<TPEngineOption, 9> TPEngineOptions = {{
    {"tp_alert_error", "set_alert_error", TPOptionKind::Switch, 0, 0, 0, ""},
    {"tp_vibrate_error", "set_vibrate_error", TPOptionKind::Switch, 0, 0, 0, ""},
    {"tp_toast_startstop", "set_toast_startstop", TPOptionKind::Switch, 0, 0, 0, ""},
    {"tp_vibrate_startstop", "set_vibrate_startstop", TPOptionKind::Switch, 0, 0, 0, ""},
    {"tp_debug_touch", "set_debug_touch", TPOptionKind::Switch, 0, 0, 0, ""},
    {"tp_toast_pos", "set_toast_pos", TPOptionKind::ToastPosition, 0, 0, 0, ""},
    {"tp_touch_color", "set_touch_color", TPOptionKind::TouchColor, 0xFF3B30, 0, 0, ""},
    {"tp_touch_size", "set_touch_size", TPOptionKind::TouchSize, 44, 8, 120, ""},
    {"tp_touch_opacity", "set_touch_opacity", TPOptionKind::TouchOpacity, 60, 5, 100, "%"},
}};

// The switch that shows the touch-marker rows.
inline constexpr const char *TPDebugTouchKey = TPEngineOptions[4].storeKey;

// The engine options kept in the app's settings and pushed to the engine as one JSON
// document after every change. Nothing registers defaults: each reader supplies its own.
class TPSettingsStore
{
public:
    TPSettingsStore() = delete;

    // The one option of a kind that is not a switch.
    static const TPEngineOption &optionOfKind(TPOptionKind kind);
    static QString keyOf(TPOptionKind kind);

    // The five on/off options, in the order of the settings screen's switches, and the
    // TPL keys of their titles.
    static QStringList switchKeys();
    static QStringList switchTitleKeys();

    static bool isDebugTouchOn();
    static quint32 currentTouchColorRGB();
    static qint64 currentTouchSize();
    static qint64 currentTouchOpacity();
    static qint64 currentToastPosition();
    static bool boolForKey(const QString &key);

    // The nine-member document, read from the store now.
    static QVariantMap settingsDocument();
    // Sends settingsDocument() to the engine; the answer is ignored.
    static void postAllSettings();

    // The writes of the settings screen; each engine option is stored and the screen then
    // posts the whole document. The language stays in the app and is never posted.
    static void storeSwitch(const QString &key, bool on);
    static void storeToastPosition(qint64 segment);
    static void storeTouchColorRGB(quint32 rgb);
    static void storeTouchSize(qint64 size);
    static void storeTouchOpacity(qint64 opacity);
    // "en" for segment 1, "vi" for any other; returns the stored code.
    static QString storeLanguageSegment(int segment);
};
