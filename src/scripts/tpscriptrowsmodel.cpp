#include "tpscriptrowsmodel.h"

#include "tpengineapi.h"
#include "tpscripttree.h"

TPScriptRowsModel::TPScriptRowsModel(ButtonsForDir buttonsForDir, QObject *parent)
    : QAbstractListModel(parent), m_buttonsForDir(std::move(buttonsForDir))
{}

void TPScriptRowsModel::setRows(const QJsonArray &rows)
{
    beginResetModel();
    m_rows = rows;
    refilter();
    endResetModel();
}

void TPScriptRowsModel::setSearch(const QString &text)
{
    const QString folded = text.toCaseFolded();
    if (folded == m_search)
        return;
    beginResetModel();
    m_search = folded;
    refilter();
    endResetModel();
}

void TPScriptRowsModel::refilter()
{
    m_shown.clear();
    for (qsizetype i = 0; i < m_rows.size(); ++i) {
        if (m_search.isEmpty() ||
            TPScriptTree::entryName(m_rows.at(i)).toCaseFolded().contains(m_search))
            m_shown.append(i);
    }
}

void TPScriptRowsModel::setRunsInFlight(const QSet<QString> &paths)
{
    m_runsInFlight = paths;
    if (rowCount() > 0)
        emit dataChanged(index(0), index(rowCount() - 1), {ButtonsRole});
}

void TPScriptRowsModel::retitleButtons()
{
    if (rowCount() > 0)
        emit dataChanged(index(0), index(rowCount() - 1), {ButtonsRole});
}

qsizetype TPScriptRowsModel::sourceRow(int row) const
{
    return row >= 0 && row < m_shown.size() ? m_shown.at(row) : -1;
}

int TPScriptRowsModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_shown.size());
}

QVariant TPScriptRowsModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const QJsonValue entry = m_rows.at(m_shown.at(index.row()));
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
    case UnreachableRole:
        return !TPEngineAPI::canCarryPath(TPScriptTree::entryPath(entry));
    case ButtonsRole: {
        // A row's Run button is disabled while its run is in flight.
        const bool running = m_runsInFlight.contains(TPScriptTree::entryPath(entry));
        QVariantList buttons = m_buttonsForDir(TPScriptTree::isFolderEntry(entry));
        for (QVariant &button : buttons) {
            QVariantMap map = button.toMap();
            map.insert(QStringLiteral("enabled"),
                       !running || map.value(QStringLiteral("action")) != QLatin1String("run"));
            button = map;
        }
        return buttons;
    }
    default:
        return {};
    }
}

QHash<int, QByteArray> TPScriptRowsModel::roleNames() const
{
    return {{LabelRole, "label"},     {IsFolderRole, "isFolder"},       {PathRole, "path"},
            {CanEditRole, "canEdit"}, {UnreachableRole, "unreachable"}, {ButtonsRole, "buttons"}};
}
