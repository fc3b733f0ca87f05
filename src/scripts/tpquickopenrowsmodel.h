#pragma once

#include <QAbstractListModel>
#include <QList>
#include <QString>
#include <QtQml/qqmlregistration.h>

// The rows of quick open: a file's name over its folder, each with the matched letters in
// bold (styled text), its path, whether it can be opened (a recent or favourite file the
// listing no longer holds cannot), and the heading of the group it starts, if any.
class TPQuickOpenRowsModel : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Owned by quick open")

public:
    enum Role {
        NameRole = Qt::UserRole + 1,
        FolderRole,
        PathRole,
        DimmedRole,
        HeadingRole,
        RunEnabledRole
    };

    struct Row
    {
        QString name;
        QString folder;
        QString path;
        bool dimmed = false;
        QString heading;
        bool running = false;
    };

    using QAbstractListModel::QAbstractListModel;

    void setRows(const QList<Row> &rows);
    const QList<Row> &rows() const { return m_rows; }
    // Marks the rows of `path` as running (their Run button waits) or not.
    void setRunning(const QString &path, bool running);

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

private:
    QList<Row> m_rows;
};
