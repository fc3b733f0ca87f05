#pragma once

#include <QAbstractListModel>
#include <QList>
#include <QString>
#include <QtQml/qqmlregistration.h>

// The rows of a history screen: a title, a detail line under it, and a mark the view shows
// by colour: "" plain, "added" and "removed" for the lines of a comparison, "dimmed" for a
// file the engine no longer lists.
class TPHistoryRowsModel : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Owned by a history screen")

public:
    enum Role { TitleRole = Qt::UserRole + 1, DetailRole, MarkRole };

    struct Row
    {
        QString title;
        QString detail;
        QString mark;

        friend bool operator==(const Row &, const Row &) = default;
    };

    using QAbstractListModel::QAbstractListModel;

    void setRows(const QList<Row> &rows);
    const QList<Row> &rows() const { return m_rows; }

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

private:
    QList<Row> m_rows;
};
