#include "settings/tpsettingsrowsmodel.h"

TPSettingsRowsModel::TPSettingsRowsModel(QObject *parent) : QAbstractListModel(parent) {}

void TPSettingsRowsModel::setRows(const QList<TPSettingsRow> &rows)
{
    beginResetModel();
    m_rows = rows;
    endResetModel();
}

void TPSettingsRowsModel::replaceSection(int section, const QList<TPSettingsRow> &rows)
{
    int first = 0;
    while (first < m_rows.size() && m_rows.at(first).section < section)
        ++first;
    int end = first;
    while (end < m_rows.size() && m_rows.at(end).section == section)
        ++end;
    if (end > first) {
        beginRemoveRows({}, first, end - 1);
        m_rows.remove(first, end - first);
        endRemoveRows();
    }
    if (!rows.isEmpty()) {
        beginInsertRows({}, first, first + int(rows.size()) - 1);
        for (qsizetype i = 0; i < rows.size(); ++i)
            m_rows.insert(first + i, rows.at(i));
        endInsertRows();
    }
}

int TPSettingsRowsModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

QVariant TPSettingsRowsModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const TPSettingsRow &row = m_rows.at(index.row());
    switch (role) {
    case IdentifierRole:
        return row.identifier;
    case KindRole:
        return row.kind;
    case SectionRole:
        return row.section;
    case RowRole:
        return row.row;
    case SectionTitleRole:
        return row.sectionTitle;
    case TitleRole:
        return row.title;
    case AccessibleNameRole:
        return row.detail.isEmpty() ? row.title : row.title + QStringLiteral(", ") + row.detail;
    case DetailRole:
        return row.detail;
    case DisclosureRole:
        return row.disclosure;
    case HighlightsOnTapRole:
        return row.highlightsOnTap;
    case HeightRole:
        return row.height;
    case SwitchOnRole:
        return row.switchOn;
    case TagRole:
        return row.tag;
    case SegmentsRole:
        return row.segments;
    case SelectedSegmentRole:
        return row.selectedSegment;
    case PreviewBelowRole:
        return row.previewBelow;
    case CellRole:
        return QVariant::fromValue(row.cell.data());
    default:
        return {};
    }
}

QHash<int, QByteArray> TPSettingsRowsModel::roleNames() const
{
    return {{IdentifierRole, "identifier"},
            {KindRole, "kind"},
            {SectionRole, "section"},
            {RowRole, "row"},
            {SectionTitleRole, "sectionTitle"},
            {TitleRole, "title"},
            {DetailRole, "detail"},
            {AccessibleNameRole, "accessibleName"},
            {DisclosureRole, "disclosure"},
            {HighlightsOnTapRole, "highlightsOnTap"},
            {HeightRole, "rowHeight"},
            {SwitchOnRole, "switchOn"},
            {TagRole, "tag"},
            {SegmentsRole, "segments"},
            {SelectedSegmentRole, "selectedSegment"},
            {CellRole, "cell"},
            {PreviewBelowRole, "previewBelow"}};
}
