#include "tppresenter.h"

TPPresenter::TPPresenter(QObject *parent) : QObject(parent) {}

void TPPresenter::present(TPAlertController *alert)
{
    alert->setParent(this);
    connect(alert, &TPAlertController::dismissed, this, [this, alert] { remove(alert); });
    m_queue.append(alert);
    if (m_queue.size() == 1)
        emit currentChanged();
}

void TPPresenter::remove(TPAlertController *alert)
{
    const bool wasCurrent = current() == alert;
    m_queue.removeOne(alert);
    alert->deleteLater();
    if (wasCurrent)
        emit currentChanged();
}
