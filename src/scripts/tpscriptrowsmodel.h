#pragma once

#include "scripts/tprowbutton.h"

#include <QAbstractListModel>
#include <QJsonArray>
#include <QSet>
#include <QVariantList>
#include <QtQml/qqmlregistration.h>

#include <functional>

// The rows of one folder's list, and their only owner: one row per entry, labelled
// "📁 name" or "📄 name", each with its buttons. A search narrows the rows shown to the
// names that hold it, ignoring case; row numbers are those of the rows shown. The rules of a
// row (whether it can be deleted, whether its Run button is enabled) are decided here alone.
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
    using ButtonsForDir = std::function<QList<TPRowButton>(bool isDir)>;

    explicit TPScriptRowsModel(ButtonsForDir buttonsForDir, QObject *parent = nullptr);

    // Replaces every row at once.
    void setRows(const QJsonArray &rows);
    // Every row, whatever the search shows.
    const QJsonArray &allRows() const { return m_rows; }
    // Shows only rows whose name holds `text`, ignoring case; empty shows every row.
    void setSearch(const QString &text);
    // While a file's run is in flight its Run button is disabled.
    void setRunInFlight(const QString &path, bool inFlight);
    // The buttons' titles follow the language.
    void retitleButtons();

    // The entry shown at `row`, or an undefined value when no row is shown there.
    QJsonValue entryAt(int row) const;
    // Only files offer swipe-to-delete.
    bool canEditRow(int row) const;
    bool isRunEnabled(int row) const;

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

private:
    void buttonsChanged();
    void refilter();

    ButtonsForDir m_buttonsForDir;
    QJsonArray m_rows;
    QString m_search;
    QList<qsizetype> m_shown;
    QSet<QString> m_runsInFlight;
};
