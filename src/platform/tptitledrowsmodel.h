#pragma once

#include <QAbstractListModel>
#include <QList>
#include <QString>
#include <QtQml/qqmlregistration.h>

// Rows of a title over a detail line, with a mark the view shows by colour: plain, added and
// removed (the lines of a comparison), folded (unchanged lines left out of one), dimmed
// (what cannot be opened). The history's screens and the editor's outline list with it.
class TPTitledRowsModel : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Owned by a screen")

public:
    enum Role { TitleRole = Qt::UserRole + 1, DetailRole, MarkRole };
    // The views read the mark as a number and compare it with these, by name.
    enum Mark { Plain, Added, Removed, Folded, Dimmed };
    Q_ENUM(Mark)

    struct Row
    {
        QString title;
        QString detail;
        Mark mark = Plain;

        friend bool operator==(const Row &, const Row &) = default;
    };

    using QAbstractListModel::QAbstractListModel;

    void setRows(const QList<Row> &rows);
    // The same rows, changed in place, with only the extra ones coming or going: a view keeps
    // its delegates (the completion list changes on every key).
    void updateRows(const QList<Row> &rows);
    const QList<Row> &rows() const { return m_rows; }

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

private:
    QList<Row> m_rows;
};
