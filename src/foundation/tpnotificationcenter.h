#pragma once

#include <QObject>

// The process-wide broadcaster of app notifications. Screens connect their
// onLangChangedNotification slot to TPLangChanged and disconnect when they stop listening.
class TPNotificationCenter : public QObject
{
    Q_OBJECT
public:
    static TPNotificationCenter *defaultCenter();

    // Called right after a new language code has been stored.
    void postLangChanged();

signals:
    void TPLangChanged();

private:
    TPNotificationCenter() = default;
};
