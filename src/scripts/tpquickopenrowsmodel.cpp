#include "scripts/tpquickopenrowsmodel.h"

void TPQuickOpenRowsModel::setRows(const QList<Row> &rows)
{
    beginResetModel();
    m_rows = rows;
    endResetModel();
}

void TPQuickOpenRowsModel::setRunning(const QString &path, bool running)
{
    for (qsizetype i = 0; i < m_rows.size(); ++i) {
        if (m_rows.at(i).path == path && m_rows.at(i).running != running) {
            m_rows[i].running = running;
            emit dataChanged(index(int(i)), index(int(i)), {RunEnabledRole});
        }
    }
}

int TPQuickOpenRowsModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

QVariant TPQuickOpenRowsModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const Row &row = m_rows.at(index.row());
    switch (role) {
    case NameRole:
        return row.name;
    case FolderRole:
        return row.folder;
    case PathRole:
        return row.path;
    case DimmedRole:
        return row.dimmed;
    case HeadingRole:
        return row.heading;
    case RunEnabledRole:
        return !row.dimmed && !row.running;
    default:
        return {};
    }
}

QHash<int, QByteArray> TPQuickOpenRowsModel::roleNames() const
{
    return {{NameRole, "name"},     {FolderRole, "folder"},   {PathRole, "path"},
            {DimmedRole, "dimmed"}, {HeadingRole, "heading"}, {RunEnabledRole, "runEnabled"}};
}
