#include "platform/tppresenter.h"

TPPresenter::TPPresenter(QObject *parent) : QObject(parent)
{
    connect(this, &TPPresenter::currentChanged, this, &TPPresenter::layoutChanged);
}

void TPPresenter::setWindowWidth(qreal width)
{
    if (qFuzzyCompare(m_windowWidth, width))
        return;
    m_windowWidth = width;
    emit layoutChanged();
}

bool TPPresenter::currentIsPopover() const
{
    const TPAlertController *alert = current();
    return alert && alert->preferredStyle() == TPAlertController::Style::ActionSheet &&
           !alert->anchor().isEmpty() && m_windowWidth >= WideWindowWidth;
}

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
