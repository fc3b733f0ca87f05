#include "platform/tpnavigationstack.h"

#include "platform/tppresenter.h"
#include "platform/tpviewcontroller.h"

TPNavigationStack::TPNavigationStack(TPViewController *root, TPPresenter *presenter,
                                     QObject *parent)
    : QAbstractListModel(parent), m_presenter(presenter)
{
    connect(this, &TPNavigationStack::depthChanged, this, &TPNavigationStack::backTitleChanged);
    adopt(root);
    m_controllers.append(root);
}

void TPNavigationStack::adopt(TPViewController *controller)
{
    controller->setParent(this);
    controller->setNavigationController(this, m_presenter);
    // A screen re-titled in place (the root, on a language change) renames the way back.
    connect(controller, &TPViewController::titleChanged, this,
            &TPNavigationStack::backTitleChanged);
}

QString TPNavigationStack::backTitle() const
{
    return depth() > 1 ? m_controllers.at(depth() - 2)->title() : QString();
}

int TPNavigationStack::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : depth();
}

QVariant TPNavigationStack::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    return role == ControllerRole ? QVariant::fromValue(m_controllers.at(index.row())) : QVariant();
}

QHash<int, QByteArray> TPNavigationStack::roleNames() const
{
    return {{ControllerRole, "controller"}};
}

TPViewController *TPNavigationStack::topViewController() const
{
    return m_controllers.last();
}

TPViewController *TPNavigationStack::controllerAt(int index) const
{
    return index >= 0 && index < depth() ? m_controllers.at(index) : nullptr;
}

void TPNavigationStack::appear(TPViewController *controller)
{
    controller->loadViewIfNeeded();
    controller->viewWillAppear();
}

void TPNavigationStack::pushViewController(TPViewController *controller)
{
    if (m_visible)
        topViewController()->viewWillDisappear();
    adopt(controller);
    beginInsertRows({}, depth(), depth());
    m_controllers.append(controller);
    endInsertRows();
    emit depthChanged();
    if (m_visible)
        appear(controller);
    else
        controller->loadViewIfNeeded();
}

void TPNavigationStack::replaceAboveRoot(const QList<TPViewController *> &controllers)
{
    if (m_visible)
        topViewController()->viewWillDisappear();
    // One row at a time, as a view follows the back button.
    while (depth() > 1) {
        TPViewController *leaving = topViewController();
        beginRemoveRows({}, depth() - 1, depth() - 1);
        m_controllers.removeLast();
        endRemoveRows();
        leaving->deleteLater();
    }
    for (TPViewController *controller : controllers) {
        adopt(controller);
        beginInsertRows({}, depth(), depth());
        m_controllers.append(controller);
        endInsertRows();
        controller->loadViewIfNeeded();
    }
    emit depthChanged();
    if (m_visible)
        appear(topViewController());
}

void TPNavigationStack::popViewController()
{
    if (depth() < 2)
        return;
    TPViewController *leaving = topViewController();
    if (m_visible)
        leaving->viewWillDisappear();
    beginRemoveRows({}, depth() - 1, depth() - 1);
    m_controllers.removeLast();
    endRemoveRows();
    emit depthChanged();
    leaving->deleteLater();
    if (m_visible)
        topViewController()->viewWillAppear();
}

void TPNavigationStack::setVisible(bool visible)
{
    if (m_visible == visible)
        return;
    m_visible = visible;
    if (visible)
        appear(topViewController());
    else
        topViewController()->viewWillDisappear();
}
