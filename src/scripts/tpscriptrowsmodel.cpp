#include "tpscriptrowsmodel.h"

#include "tpscripttree.h"

TPScriptRowsModel::TPScriptRowsModel(QObject *parent) : QAbstractListModel(parent) {}

void TPScriptRowsModel::setRows(const QJsonArray &rows)
{
    beginResetModel();
    m_rows = rows;
    endResetModel();
}

int TPScriptRowsModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

QVariant TPScriptRowsModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const QJsonValue entry = m_rows.at(index.row());
    switch (role) {
    case LabelRole:
        return TPScriptTree::rowLabel(entry);
    case IsFolderRole:
        return TPScriptTree::isFolderEntry(entry);
    case PathRole:
        return TPScriptTree::entryPath(entry);
    case CanEditRole:
        // Only files offer swipe-to-delete.
        return !TPScriptTree::isFolderEntry(entry);
    default:
        return {};
    }
}

QHash<int, QByteArray> TPScriptRowsModel::roleNames() const
{
    return {{LabelRole, "label"},
            {IsFolderRole, "isFolder"},
            {PathRole, "path"},
            {CanEditRole, "canEdit"}};
}
