#pragma once

#include "tpalertcontroller.h"

#include <QList>
#include <QObject>
#include <QtQml/qqmlregistration.h>

// Shows alerts and sheets one at a time over the window, in the order they were presented;
// one that arrives while another is up waits its turn. Owns what it shows.
class TPPresenter : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The app delegate owns the presenter")
    Q_PROPERTY(TPAlertController *current READ current NOTIFY currentChanged)

public:
    explicit TPPresenter(QObject *parent = nullptr);

    void present(TPAlertController *alert);
    // The alert on screen, or null.
    TPAlertController *current() const { return m_queue.isEmpty() ? nullptr : m_queue.first(); }
    // Every alert not yet dismissed, the one on screen first.
    QList<TPAlertController *> pending() const { return m_queue; }

signals:
    void currentChanged();

private:
    void remove(TPAlertController *alert);

    QList<TPAlertController *> m_queue;
};
