#include "platform/tppresenter.h"

TPPresenter::TPPresenter(QObject *parent) : QObject(parent)
{
    connect(this, &TPPresenter::currentChanged, this, &TPPresenter::layoutChanged);
    connect(this, &TPPresenter::layoutChanged, this, &TPPresenter::updateOffered);
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
           alert->anchor() && m_windowWidth >= WideWindowWidth;
}

void TPPresenter::updateOffered()
{
    const TPAlertController *alert = current();
    if (!alert)
        return;
    const bool popover = currentIsPopover();
    // Tapping beside a popover cancels it.
    for (TPAlertAction *action : alert->actions())
        action->setOffered(!popover || action->style() != TPAlertAction::Style::Cancel);
}

void TPPresenter::tapOutside()
{
    TPAlertController *alert = current();
    if (alert && alert->preferredStyle() == TPAlertController::Style::ActionSheet)
        alert->dismissByCancel();
}

void TPPresenter::present(TPAlertController *alert)
{
    alert->setParent(this);
    connect(alert, &TPAlertController::dismissed, this, [this, alert] { remove(alert); });
    connect(alert, &TPAlertController::anchorChanged, this, [this, alert] {
        if (current() == alert)
            emit layoutChanged();
    });
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

QUrl TPPresenter::hostUrl()
{
    return QUrl(QStringLiteral("qrc:/qt-project.org/imports/TPCompanion/Platform/AlertHost.qml"));
}
