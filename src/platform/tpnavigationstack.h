#pragma once

#include "platform/tpviewcontroller.h"

#include <QAbstractListModel>
#include <QList>
#include <QPointer>
#include <QtQml/qqmlregistration.h>

class TPPresenter;

// A navigation stack: the screens of one tab, the root first. It owns its screens; a popped
// screen is deleted, so late completions that hold it weakly find it gone. The QML
// StackView of the tab follows this model: rows inserted are pages pushed, and rows removed
// are exactly the pages that went, the top ones.
class TPNavigationStack : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Stacks are made by the app")
    Q_PROPERTY(int depth READ depth NOTIFY depthChanged)
    Q_PROPERTY(TPViewController *topViewController READ topViewController NOTIFY depthChanged)
    // The title of the screen the back button returns to; empty on the root screen.
    Q_PROPERTY(QString backTitle READ backTitle NOTIFY backTitleChanged)

public:
    // Each row is one screen; its view's page is the screen's viewUrl.
    enum Role { ControllerRole = Qt::UserRole + 1 };

    TPNavigationStack(TPViewController *root, TPPresenter *presenter, QObject *parent = nullptr);

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    void pushViewController(TPViewController *controller);
    // Pops the top screen (never the root); the back button calls it.
    Q_INVOKABLE void popViewController();
    // Replaces every screen above the root with `controllers`, the last one on top, as if
    // they had been pushed one by one; only the new top appears.
    void replaceAboveRoot(const QList<TPViewController *> &controllers);
    int depth() const { return int(m_controllers.size()); }
    TPViewController *topViewController() const;
    QString backTitle() const;
    Q_INVOKABLE TPViewController *controllerAt(int index) const;

    TPPresenter *presenter() const { return m_presenter; }

    // Whether the stack's tab is on screen: the top screen appears and disappears with it.
    void setVisible(bool visible);

signals:
    void depthChanged();
    void backTitleChanged();

private:
    void appear(TPViewController *controller);
    void adopt(TPViewController *controller);

    QList<TPViewController *> m_controllers;
    QPointer<TPPresenter> m_presenter;
    bool m_visible = false;
};
