#include "scripts/tpscriptrowsmodel.h"

#include "engine/tpengineapi.h"
#include "scripts/tpscripttree.h"

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

void TPScriptRowsModel::setRunInFlight(const QString &path, bool inFlight)
{
    if (inFlight)
        m_runsInFlight.insert(path);
    else
        m_runsInFlight.remove(path);
    buttonsChanged();
}

void TPScriptRowsModel::retitleButtons()
{
    buttonsChanged();
}

void TPScriptRowsModel::buttonsChanged()
{
    if (rowCount() > 0)
        emit dataChanged(index(0), index(rowCount() - 1), {ButtonsRole});
}

QJsonValue TPScriptRowsModel::entryAt(int row) const
{
    return row >= 0 && row < m_shown.size() ? m_rows.at(m_shown.at(row))
                                            : QJsonValue(QJsonValue::Undefined);
}

bool TPScriptRowsModel::canEditRow(int row) const
{
    const QJsonValue entry = entryAt(row);
    return !entry.isUndefined() && !TPScriptTree::isFolderEntry(entry);
}

bool TPScriptRowsModel::isRunEnabled(int row) const
{
    return canEditRow(row) && !m_runsInFlight.contains(TPEngineAPI::entryPath(entryAt(row)));
}

int TPScriptRowsModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_shown.size());
}

QVariant TPScriptRowsModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const QJsonValue entry = entryAt(index.row());
    switch (role) {
    case LabelRole:
        return TPScriptTree::rowLabel(entry);
    case IsFolderRole:
        return TPScriptTree::isFolderEntry(entry);
    case PathRole:
        return TPEngineAPI::entryPath(entry);
    case CanEditRole:
        return canEditRow(index.row());
    case UnreachableRole:
        return !TPEngineAPI::canCarryPath(TPEngineAPI::entryPath(entry));
    case ButtonsRole: {
        const bool runEnabled = isRunEnabled(index.row());
        QVariantList buttons;
        for (TPRowButton button : m_buttonsForDir(TPScriptTree::isFolderEntry(entry))) {
            button.enabled = runEnabled || button.action != TPRowButtonKind::Run;
            buttons.append(QVariant::fromValue(button));
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
