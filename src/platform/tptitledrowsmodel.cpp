#include "platform/tptitledrowsmodel.h"

void TPTitledRowsModel::setRows(const QList<Row> &rows)
{
    beginResetModel();
    m_rows = rows;
    endResetModel();
}

int TPTitledRowsModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

QVariant TPTitledRowsModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_rows.size())
        return {};
    const Row &row = m_rows.at(index.row());
    switch (role) {
    case TitleRole:
        return row.title;
    case DetailRole:
        return row.detail;
    case MarkRole:
        return row.mark;
    default:
        return {};
    }
}

QHash<int, QByteArray> TPTitledRowsModel::roleNames() const
{
    return {{TitleRole, "title"}, {DetailRole, "detail"}, {MarkRole, "mark"}};
}
