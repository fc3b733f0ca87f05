#pragma once

#include <QString>
#include <QStringList>
#include <QVariantMap>

// The engine options kept in the app's settings and pushed to the engine as one JSON
// document after every change. Nothing registers defaults: each reader supplies its own.
class TPSettingsStore
{
public:
    TPSettingsStore() = delete;

    static constexpr quint32 DefaultTouchColorRGB = 0xFF3B30;
    static constexpr qint64 DefaultTouchSize = 44;
    static constexpr qint64 DefaultTouchOpacity = 60;

    // The five on/off options, in the order of the settings screen's switches.
    static QStringList switchKeys();

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
