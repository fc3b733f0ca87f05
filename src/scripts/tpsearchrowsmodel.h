#pragma once

#include <QAbstractListModel>
#include <QList>
#include <QString>
#include <QtQml/qqmlregistration.h>

// The rows of the search in all files and of its replace preview: a file's row over its
// matches, or over the lines a replace changes; files that could not be read, with Retry;
// files that are not text. Titles of match and change rows are styled text, with the match
// in bold.
class TPSearchRowsModel : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Owned by the search")

public:
    enum Kind {
        FileRow,
        MatchRow,
        // One more row under a file: how many matches are not shown.
        MoreRow,
        UnreadRow,
        NotTextRow,
        // A replace preview's lines, as they are and as they will be.
        BeforeRow,
        AfterRow
    };
    Q_ENUM(Kind)

    enum Role {
        KindRole = Qt::UserRole + 1,
        TitleRole,
        DetailRole,
        LineRole,
        // A preview's file is replaced in (its toggle), or left out.
        IncludedRole,
        // The file can be replaced in: the toggle can be used.
        IncludableRole
    };

    struct Row
    {
        Kind kind = FileRow;
        QString title;
        QString detail;
        QString path;
        int line = 0;
        // A match row's match, in its file's text.
        qsizetype offset = 0;
        qsizetype length = 0;
        bool included = false;
        bool includable = false;
    };

    using QAbstractListModel::QAbstractListModel;

    void setRows(const QList<Row> &rows);
    const QList<Row> &rows() const { return m_rows; }
    void setIncluded(int row, bool included);

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

private:
    QList<Row> m_rows;
};
