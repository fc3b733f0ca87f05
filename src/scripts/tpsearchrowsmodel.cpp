#include "scripts/tpsearchrowsmodel.h"

#include <algorithm>

void TPSearchRowsModel::setRows(const QList<Row> &rows)
{
    // Rows change in place and only the extra ones come or go, so that a view keeps its
    // delegates from one query to the next: making them anew took longer than a frame.
    const int kept = int(std::min(m_rows.size(), rows.size()));
    if (rows.size() < m_rows.size()) {
        beginRemoveRows({}, kept, int(m_rows.size()) - 1);
        m_rows.resize(kept);
        endRemoveRows();
    }
    std::copy(rows.cbegin(), rows.cbegin() + kept, m_rows.begin());
    if (kept > 0)
        emit dataChanged(index(0), index(kept - 1));
    if (rows.size() > kept) {
        beginInsertRows({}, kept, int(rows.size()) - 1);
        m_rows.append(rows.mid(kept));
        endInsertRows();
    }
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
