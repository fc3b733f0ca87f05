#pragma once

#include <QAbstractListModel>
#include <QList>
#include <QUrl>
#include <QtQml/qqmlregistration.h>

class TPNavigationStack;

// The tab bar: one navigation stack per tab, each with its title and icon. The shown tab's
// top screen appears; the others' disappear.
class TPTabBarController : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The app delegate builds the tabs")
    Q_PROPERTY(
        int selectedIndex READ selectedIndex WRITE setSelectedIndex NOTIFY selectedIndexChanged)

public:
    // ShownRole: the tab has been shown at least once. Its screens are built then, not at
    // launch, and kept afterwards.
    enum Role { TitleRole = Qt::UserRole + 1, IconRole, StackRole, ShownRole };

    // A tab's index is its tag: Scripts 0, Store 1, Settings 2.
    struct Tab
    {
        TPNavigationStack *stack = nullptr;
        QString title;
        QUrl icon;
        bool shown = false;
    };

    explicit TPTabBarController(QObject *parent = nullptr);

    // Takes ownership of the stacks; the first tab is shown.
    void setTabs(const QList<Tab> &tabs);
    void setTitle(int index, const QString &title);
    const QList<Tab> &tabs() const { return m_tabs; }

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    int selectedIndex() const { return m_selectedIndex; }
    void setSelectedIndex(int index);

signals:
    void selectedIndexChanged();

private:
    QList<Tab> m_tabs;
    int m_selectedIndex = -1;
};
