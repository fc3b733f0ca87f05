#include "platform/tptabbarcontroller.h"

#include "platform/tpnavigationstack.h"

TPTabBarController::TPTabBarController(QObject *parent) : QAbstractListModel(parent) {}

void TPTabBarController::setTabs(const QList<Tab> &tabs)
{
    beginResetModel();
    m_tabs = tabs;
    for (const Tab &tab : tabs)
        tab.stack->setParent(this);
    endResetModel();
    m_selectedIndex = -1;
    setSelectedIndex(0);
}

void TPTabBarController::setTitle(int index, const QString &title)
{
    if (index < 0 || index >= m_tabs.size())
        return;
    m_tabs[index].title = title;
    emit dataChanged(this->index(index), this->index(index), {TitleRole});
}

int TPTabBarController::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_tabs.size());
}

QVariant TPTabBarController::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const Tab &tab = m_tabs.at(index.row());
    switch (role) {
    case TitleRole:
        return tab.title;
    case IconRole:
        return tab.icon;
    case StackRole:
        return QVariant::fromValue(tab.stack);
    case ShownRole:
        return tab.shown;
    default:
        return {};
    }
}

QHash<int, QByteArray> TPTabBarController::roleNames() const
{
    return {
        {TitleRole, "title"}, {IconRole, "iconSource"}, {StackRole, "stack"}, {ShownRole, "shown"}};
}

void TPTabBarController::setSelectedIndex(int index)
{
    if (index == m_selectedIndex || index < 0 || index >= m_tabs.size())
        return;
    if (m_selectedIndex >= 0)
        m_tabs.at(m_selectedIndex).stack->setVisible(false);
    m_selectedIndex = index;
    m_tabs.at(index).stack->setVisible(true);
    if (!m_tabs.at(index).shown) {
        m_tabs[index].shown = true;
        emit dataChanged(this->index(index), this->index(index), {ShownRole});
    }
    emit selectedIndexChanged();
}
