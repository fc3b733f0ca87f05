#include "scripts/tpsearchrowsmodel.h"

void TPSearchRowsModel::setRows(const QList<Row> &rows)
{
    beginResetModel();
    m_rows = rows;
    endResetModel();
}

void TPSearchRowsModel::setIncluded(int row, bool included)
{
    if (row < 0 || row >= m_rows.size() || m_rows.at(row).included == included)
        return;
    m_rows[row].included = included;
    emit dataChanged(index(row), index(row), {IncludedRole});
}

int TPSearchRowsModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

QVariant TPSearchRowsModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const Row &row = m_rows.at(index.row());
    switch (role) {
    case KindRole:
        return row.kind;
    case TitleRole:
        return row.title;
    case DetailRole:
        return row.detail;
    case LineRole:
        return row.line;
    case IncludedRole:
        return row.included;
    case IncludableRole:
        return row.includable;
    default:
        return {};
    }
}

QHash<int, QByteArray> TPSearchRowsModel::roleNames() const
{
    return {{KindRole, "kind"}, {TitleRole, "title"},       {DetailRole, "detail"},
            {LineRole, "line"}, {IncludedRole, "included"}, {IncludableRole, "includable"}};
}
