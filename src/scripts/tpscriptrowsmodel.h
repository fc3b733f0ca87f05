#pragma once

#include <QAbstractListModel>
#include <QJsonArray>
#include <QSet>
#include <QVariantList>
#include <QtQml/qqmlregistration.h>

#include <functional>

// The rows of one folder's list: one row per entry, labelled "📁 name" or "📄 name", each
// with its buttons. A search narrows the rows shown to the names that hold it, ignoring
// case; row numbers are those of the rows shown.
class TPScriptRowsModel : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Owned by the scripts list screen")

public:
    enum Role {
        LabelRole = Qt::UserRole + 1,
        IsFolderRole,
        PathRole,
        CanEditRole,
        // The row's path cannot travel in the engine's URL.
        UnreachableRole,
        ButtonsRole,
    };

    // The buttons of a folder's or a file's row.
    using ButtonsForDir = std::function<QVariantList(bool isDir)>;

    explicit TPScriptRowsModel(ButtonsForDir buttonsForDir, QObject *parent = nullptr);

    // Replaces every row at once.
    void setRows(const QJsonArray &rows);
    // Shows only rows whose name holds `text`, ignoring case; empty shows every row.
    void setSearch(const QString &text);
    void setRunsInFlight(const QSet<QString> &paths);
    // The buttons' titles follow the language.
    void retitleButtons();

    // The index in the rows given to setRows of the row shown at `row`, or -1.
    qsizetype sourceRow(int row) const;

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

private:
    void refilter();

    ButtonsForDir m_buttonsForDir;
    QJsonArray m_rows;
    QString m_search;
    QList<qsizetype> m_shown;
    QSet<QString> m_runsInFlight;
};
