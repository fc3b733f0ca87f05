#pragma once

#include <QObject>
#include <QString>
#include <QTimer>
#include <QtQml/qqmlregistration.h>

#include <functional>

// A bar at the bottom of a screen that tells of something just done and offers to undo it
// for a few seconds ("Deleted main.lua · Undo"). A new offer replaces the one shown; the
// bar goes when its time is up, when it is dismissed, or once its action was taken.
class TPUndoBar : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the screen that offers the undo")
    Q_PROPERTY(bool shown READ isShown NOTIFY changed)
    Q_PROPERTY(QString text READ text NOTIFY changed)
    Q_PROPERTY(QString actionTitle READ actionTitle NOTIFY changed)

public:
    static constexpr int DefaultTimeoutMs = 6000;

    explicit TPUndoBar(QObject *parent = nullptr);

    bool isShown() const { return m_shown; }
    QString text() const { return m_text; }
    QString actionTitle() const { return m_actionTitle; }
    int timeoutMs() const { return m_timer.interval(); }
    void setTimeoutMs(int ms) { m_timer.setInterval(ms); }

    // Shows `text` with `actionTitle`, whose tap runs `undo` once.
    void offer(const QString &text, const QString &actionTitle, std::function<void()> undo);

public slots:
    // The bar's action was tapped: the bar goes, then the undo runs.
    void trigger();
    void dismiss();

signals:
    void changed();

private:
    bool m_shown = false;
    QString m_text;
    QString m_actionTitle;
    std::function<void()> m_undo;
    QTimer m_timer;
};
