#pragma once

#include <QAbstractListModel>
#include <QJsonArray>
#include <QtQml/qqmlregistration.h>

// The rows of one folder's list: one row per entry, labelled "📁 name" or "📄 name".
class TPScriptRowsModel : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Owned by the scripts list screen")

public:
    enum Role { LabelRole = Qt::UserRole + 1, IsFolderRole, PathRole, CanEditRole };

    explicit TPScriptRowsModel(QObject *parent = nullptr);

    // Replaces every row at once.
    void setRows(const QJsonArray &rows);

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

private:
    QJsonArray m_rows;
};
