#pragma once

#include "platform/tpalertcontroller.h"

#include <QList>
#include <QObject>
#include <QUrl>
#include <QtQml/qqmlregistration.h>

// Shows alerts and sheets one at a time over the window, in the order they were presented;
// one that arrives while another is up waits its turn. Owns what it shows.
class TPPresenter : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The app delegate owns the presenter")
    Q_PROPERTY(TPAlertController *current READ current NOTIFY currentChanged)
    // The width the alerts are shown in, from the window.
    Q_PROPERTY(qreal windowWidth READ windowWidth WRITE setWindowWidth NOTIFY layoutChanged)
    // The sheet on screen shows as a popover beside its anchor: only on a wide window, and
    // then without its Cancel action (tapping outside cancels). On a phone-sized window a
    // sheet rises from the bottom with every action, Cancel last.
    Q_PROPERTY(bool currentIsPopover READ currentIsPopover NOTIFY layoutChanged)
    // The view that shows the alerts over the window, made with this presenter. A window
    // makes it as the first alert comes up, by this address, so that a launch that shows
    // none does not even read it.
    Q_PROPERTY(QUrl hostUrl READ hostUrl CONSTANT)

public:
    explicit TPPresenter(QObject *parent = nullptr);

    void present(TPAlertController *alert);
    // The alert on screen, or null.
    TPAlertController *current() const { return m_queue.isEmpty() ? nullptr : m_queue.first(); }
    // Every alert not yet dismissed, the one on screen first.
    QList<TPAlertController *> pending() const { return m_queue; }

    // From this width on a window counts as wide (a tablet, a desktop window).
    static constexpr qreal WideWindowWidth = 600;
    qreal windowWidth() const { return m_windowWidth; }
    void setWindowWidth(qreal width);
    bool currentIsPopover() const;
    // A tap outside the alert: a sheet is cancelled as its Cancel action would; an alert
    // waits for an answer.
    Q_INVOKABLE void tapOutside();
    static QUrl hostUrl();

signals:
    void currentChanged();
    void layoutChanged();

private:
    void remove(TPAlertController *alert);
    // The current alert offers all its actions, except that a popover leaves out Cancel.
    void updateOffered();

    QList<TPAlertController *> m_queue;
    qreal m_windowWidth = 0;
};
