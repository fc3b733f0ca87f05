#pragma once

#include <QObject>
#include <QPointer>
#include <QString>
#include <QUrl>
#include <QtQml/qqmlregistration.h>

#include <functional>

#include "platform/tppresenter.h"

class TPNavigationStack;

// A screen: the state and operations a view binds to. Its view is one QML page, named by
// viewUrl. The navigation stack that shows it calls the lifecycle operations.
class TPViewController : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Screens are made by the app")
    Q_PROPERTY(QString title READ title NOTIFY titleChanged)
    Q_PROPERTY(QUrl viewUrl READ viewUrl CONSTANT)
    // A mark beside the title: the screen holds changes not yet saved.
    Q_PROPERTY(bool unsavedChanges READ unsavedChanges NOTIFY unsavedChangesChanged)

public:
    explicit TPViewController(QObject *parent = nullptr);

    QString title() const { return m_title; }
    bool unsavedChanges() const { return m_unsavedChanges; }
    virtual QUrl viewUrl() const = 0;

    // viewDidLoad runs once, the first time the screen is about to be shown.
    void loadViewIfNeeded();
    bool isViewLoaded() const { return m_viewLoaded; }
    virtual void viewWillAppear() {}
    virtual void viewWillDisappear() {}

    // The stack that shows the screen. The stack owns the screens it shows, so it outlives
    // them; it names itself and its presenter as it takes a screen.
    TPNavigationStack *navigationController() const { return m_navigationStack; }
    void setNavigationController(TPNavigationStack *stack, TPPresenter *stackPresenter);
    // Where alerts go: one set directly, or else the presenter of the screen's stack.
    TPPresenter *presenter() const;
    void setPresenter(TPPresenter *presenter) { m_presenter = presenter; }
    void presentAlert(TPAlertController *alert);

    // A one-button alert: the title, the message and TPL("alert_ok").
    void showAlert(const QString &title, const QString &message);
    // The alert for a request the engine did not answer: "Engine offline (:8090)".
    void showOfflineAlert();
    // Asks `question` before something the user may not mean: Cancel first and the
    // default, then `confirmTitle` in the destructive style, whose tap runs `confirmed` while
    // the screen still exists.
    void confirm(const QString &question, const QString &confirmTitle,
                 std::function<void()> confirmed);

signals:
    void titleChanged();
    void unsavedChangesChanged();

protected:
    virtual void viewDidLoad() {}
    void setTitle(const QString &title);
    void setUnsavedChanges(bool unsaved);

private:
    QString m_title;
    bool m_unsavedChanges = false;
    bool m_viewLoaded = false;
    TPNavigationStack *m_navigationStack = nullptr;
    QPointer<TPPresenter> m_stackPresenter;
    QPointer<TPPresenter> m_presenter;
};
