#include "platform/tpviewcontroller.h"

#include "foundation/tplang.h"
#include "foundation/tpwhilealive.h"
#include "platform/tpalertcontroller.h"
#include "platform/tppresenter.h"

TPViewController::TPViewController(QObject *parent) : QObject(parent) {}

void TPViewController::loadViewIfNeeded()
{
    if (m_viewLoaded)
        return;
    m_viewLoaded = true;
    viewDidLoad();
}

void TPViewController::setNavigationController(TPNavigationStack *stack,
                                               TPPresenter *stackPresenter)
{
    m_navigationStack = stack;
    m_stackPresenter = stackPresenter;
}

TPPresenter *TPViewController::presenter() const
{
    return m_presenter ? m_presenter : m_stackPresenter;
}

void TPViewController::presentAlert(TPAlertController *alert)
{
    if (TPPresenter *target = presenter())
        target->present(alert);
    else
        delete alert;
}

void TPViewController::showAlert(const QString &title, const QString &message)
{
    auto *alert = new TPAlertController(title, message, TPAlertController::Style::Alert);
    alert->addAction(TPL(QStringLiteral("alert_ok")), TPAlertAction::Style::Default);
    presentAlert(alert);
}

void TPViewController::showOfflineAlert()
{
    showAlert(TPL(QStringLiteral("alert_error")), TPL(QStringLiteral("err_offline")));
}

void TPViewController::confirm(const QString &question, const QString &confirmTitle,
                               std::function<void()> confirmed)
{
    auto *alert = new TPAlertController(question, QString(), TPAlertController::Style::Alert);
    // Return answers Cancel: a key pressed by habit never replaces anything.
    alert->setPreferredAction(
        alert->addAction(TPL(QStringLiteral("cancel")), TPAlertAction::Style::Cancel));
    alert->addAction(confirmTitle, TPAlertAction::Style::Destructive,
                     TPWhileAlive(this, [confirmed = std::move(confirmed)](TPViewController *) {
                         confirmed();
                     }));
    presentAlert(alert);
}

void TPViewController::setTitle(const QString &title)
{
    if (m_title == title)
        return;
    m_title = title;
    emit titleChanged();
}

void TPViewController::setUnsavedChanges(bool unsaved)
{
    if (m_unsavedChanges == unsaved)
        return;
    m_unsavedChanges = unsaved;
    emit unsavedChangesChanged();
}
