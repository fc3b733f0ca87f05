#pragma once

#include "platform/tpalertcontroller.h"
#include "platform/tppresenter.h"
#include "platform/tptabbarcontroller.h"

#include <QObject>
#include <QPointer>
#include <QtQml/qqmlregistration.h>

// Starts the app: an empty window first, the device-name prompt when no name is stored,
// then the three tabs (Scripts, Store, Settings). Keeps the tab titles in the current
// language.
class AppDelegate : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by main")
    Q_PROPERTY(
        TPTabBarController *tabBarController READ tabBarController NOTIFY tabBarControllerChanged)
    Q_PROPERTY(TPPresenter *presenter READ presenter CONSTANT)

public:
    explicit AppDelegate(QObject *parent = nullptr);

    // Always true; the launch options are not examined.
    bool didFinishLaunching();

    // Null until the tabs are built: the window shows its empty placeholder until then.
    TPTabBarController *tabBarController() const { return m_tabBarController; }
    TPPresenter *presenter() const { return m_presenter; }
    TPAlertAction *ownerSaveAction() const { return m_ownerSaveAction; }

    void promptOwnerNameThenBuildUI();
    void buildMainUI();

public slots:
    void onOwnerPromptTextChanged(const QString &text);
    void onLangChangedNotification();

signals:
    void tabBarControllerChanged();

private:
    TPPresenter *m_presenter;
    TPTabBarController *m_tabBarController = nullptr;
    QPointer<TPAlertAction> m_ownerSaveAction;
};
