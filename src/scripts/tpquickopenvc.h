#pragma once

#include "platform/tploadingviewcontroller.h"
#include "scripts/tpfilerunner.h"
#include "scripts/tpopenintree.h"
#include "scripts/tpquickopenrowsmodel.h"

#include <QSet>
#include <QStringList>
#include <QVariantMap>
#include <QtQml/qqmlregistration.h>

#include <functional>
#include <memory>

// Opens any script by typing a few letters of its path. The whole listing is fetched as the
// list fetches it, and read on the engine's worker thread; each query is matched on a
// worker too (TPQuickOpenMatch), and only the newest query's results are shown. With no
// query, the user's favourites come first, then the files opened last; one the listing no
// longer holds is dimmed and cannot be opened. A result opens in the editor on the Scripts
// stack with the folders it lies in under it, so that Back walks up the tree.
class TPQuickOpenVC : public TPLoadingViewController
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the scripts list")
    Q_PROPERTY(TPQuickOpenRowsModel *rows READ rows CONSTANT)
    Q_PROPERTY(QString query READ query WRITE setQuery NOTIFY queryChanged)
    Q_PROPERTY(bool noMatches READ noMatches NOTIFY rowsShown)
    Q_PROPERTY(QVariantMap texts READ texts CONSTANT)

public:
    // How many results are shown at most: a few screens' worth.
    static constexpr int ResultLimit = 50;

    // Makes the screen of one folder of the tree, which a result pushes under its editor.
    using FolderScreen = TPFolderScreen;

    explicit TPQuickOpenVC(FolderScreen folderScreen, QObject *parent = nullptr);

    QUrl viewUrl() const override;
    void viewWillAppear() override;

    TPQuickOpenRowsModel *rows() const { return m_rows; }
    QString query() const { return m_query; }
    void setQuery(const QString &query);
    bool noMatches() const;
    QVariantMap texts() const { return m_texts; }
    // The query the rows shown answer ("" for the favourites and recent files).
    QString shownQuery() const { return m_shownQuery; }

public slots:
    void didSelectRow(int row);
    void onRunTapped(int row);

signals:
    void queryChanged();
    // New rows are shown.
    void rowsShown();

private:
    // The listing's files, ready to match.
    struct Index;
    void onIndexRead(std::shared_ptr<const Index> index);
    // Shows what the current query asks for: matched on a worker, or the shortcuts.
    void refresh();
    void showShortcuts();
    void showRows(const QString &query, const QList<TPQuickOpenRowsModel::Row> &rows);
    // Every file the shown query matches, which a query that extends it is matched among.
    struct Matched
    {
        QString foldedQuery;
        std::shared_ptr<const QList<qsizetype>> files;
    };

    FolderScreen m_folderScreen;
    TPQuickOpenRowsModel *m_rows;
    TPFileRunner *m_runner;
    QString m_query;
    QString m_shownQuery;
    QVariantMap m_texts;
    std::shared_ptr<const Index> m_index;
    // Counts the queries sent to the worker: a result is shown only for the newest.
    quint64 m_generation = 0;
    Matched m_matched;
};
