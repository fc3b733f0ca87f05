#include "platform/tptitledrowsmodel.h"

void TPTitledRowsModel::setRows(const QList<Row> &rows)
{
    beginResetModel();
    m_rows = rows;
    endResetModel();
}

void TPTitledRowsModel::updateRows(const QList<Row> &rows)
{
    const int kept = int(std::min(m_rows.size(), rows.size()));
    if (rows.size() < m_rows.size()) {
        beginRemoveRows({}, kept, int(m_rows.size()) - 1);
        m_rows.resize(kept);
        endRemoveRows();
    }
    for (int row = 0; row < kept; ++row) {
        if (m_rows.at(row) == rows.at(row))
            continue;
        m_rows[row] = rows.at(row);
        emit dataChanged(index(row), index(row));
    }
    if (rows.size() > kept) {
        beginInsertRows({}, kept, int(rows.size()) - 1);
        m_rows.append(rows.mid(kept));
        endInsertRows();
    }
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
        return int(row.mark);
    default:
        return {};
    }
}

QHash<int, QByteArray> TPTitledRowsModel::roleNames() const
{
    return {{TitleRole, "title"}, {DetailRole, "detail"}, {MarkRole, "mark"}};
}
