#pragma once

#include <QAbstractListModel>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QtQml/qqmlregistration.h>

// How a settings row is drawn and which control it holds.
namespace TPSettingsRowKind {
Q_NAMESPACE
QML_ELEMENT
enum Kind {
    Value,    // a title and a value, maybe with a disclosure chevron
    Switch,   // a title and an on/off switch
    Segments, // a title and a segmented control
    Swatch,   // the colour swatches (the row's own controller)
    Slider,   // a titled slider (the row's own controller)
};
Q_ENUM_NS(Kind)
} // namespace TPSettingsRowKind

// One row of the settings table as the view draws it.
struct TPSettingsRow
{
    QString identifier; // the row's reuse identifier ("ipCell", "switchCell", ...)
    TPSettingsRowKind::Kind kind = TPSettingsRowKind::Value;
    int section = 0;
    int row = 0;
    QString sectionTitle;
    QString title;
    QString detail;
    bool disclosure = false;
    bool highlightsOnTap = true;
    int height = 44;
    bool switchOn = false;
    int tag = 0;
    QStringList segments;
    int selectedSegment = 0;
    QPointer<QObject> cell; // the swatch or slider row's own controller
    // The touch marker's preview is drawn under the row, outside its height: the last
    // touch-marker row carries it.
    bool previewBelow = false;
};

// The settings table's rows, section after section; the view groups them by section title.
class TPSettingsRowsModel : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Owned by the settings screen")

public:
    enum Role {
        IdentifierRole = Qt::UserRole + 1,
        KindRole,
        SectionRole,
        RowRole,
        SectionTitleRole,
        TitleRole,
        DetailRole,
        DisclosureRole,
        HighlightsOnTapRole,
        HeightRole,
        SwitchOnRole,
        TagRole,
        SegmentsRole,
        SelectedSegmentRole,
        CellRole,
        // What a screen reader announces for the row: its title, then its value if any.
        AccessibleNameRole,
        PreviewBelowRole,
    };

    explicit TPSettingsRowsModel(QObject *parent = nullptr);

    void setRows(const QList<TPSettingsRow> &rows);
    // Replaces one section's rows, leaving the other sections' rows in place.
    void replaceSection(int section, const QList<TPSettingsRow> &rows);
    const QList<TPSettingsRow> &rows() const { return m_rows; }

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

private:
    QList<TPSettingsRow> m_rows;
};
