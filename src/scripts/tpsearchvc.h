#pragma once

#include "platform/tpviewcontroller.h"
#include "scripts/tpfilesearch.h"
#include "scripts/tpopenintree.h"
#include "scripts/tpsearchrowsmodel.h"

#include <QTimer>
#include <QVariantMap>
#include <QtQml/qqmlregistration.h>

class TPScriptTreeIndex;

// Find, and replace, in every file of the tree. The texts are the tree's index's: read once
// for the session through the described requests, and again when the listing is reloaded.
// While they are read the screen shows how far it has come. Each query is matched on a
// worker, and only the newest query's results are shown: grouped by file, each match with
// its line number and its line, the match in bold. A match opens its file in the editor with
// the folders it lies in under it, the match selected. Files whose read failed are listed
// with Retry; files that are not UTF-8 text are listed as left alone. Replace in all files
// shows a preview first (TPReplacePreviewVC).
class TPSearchVC : public TPViewController
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the scripts list")
    Q_PROPERTY(TPSearchRowsModel *rows READ rows CONSTANT)
    Q_PROPERTY(QString query READ query WRITE setQuery NOTIFY queryChanged)
    Q_PROPERTY(QString replacement READ replacement WRITE setReplacement NOTIFY queryChanged)
    Q_PROPERTY(bool regularExpression READ regularExpression WRITE setRegularExpression NOTIFY
                   queryChanged)
    Q_PROPERTY(bool caseSensitive READ caseSensitive WRITE setCaseSensitive NOTIFY queryChanged)
    Q_PROPERTY(bool reading READ reading NOTIFY progressChanged)
    Q_PROPERTY(qreal progress READ progress NOTIFY progressChanged)
    Q_PROPERTY(QString status READ status NOTIFY statusChanged)
    Q_PROPERTY(bool canReplace READ canReplace NOTIFY statusChanged)
    Q_PROPERTY(QVariantMap texts READ texts NOTIFY textsChanged)

public:
    TPSearchVC(TPFolderScreen folderScreen, TPScriptTreeIndex *index, QObject *parent = nullptr);

    QUrl viewUrl() const override;
    void viewWillAppear() override;

    TPSearchRowsModel *rows() const { return m_rows; }
    QString query() const { return m_query; }
    void setQuery(const QString &query);
    QString replacement() const { return m_replacement; }
    void setReplacement(const QString &replacement);
    bool regularExpression() const { return m_regularExpression; }
    void setRegularExpression(bool on);
    bool caseSensitive() const { return m_caseSensitive; }
    void setCaseSensitive(bool on);
    bool reading() const;
    qreal progress() const;
    // What the screen says under the fields: progress, the count of matches, no match, a
    // broken regular expression, or a listing that did not come.
    QString status() const { return m_status; }
    bool canReplace() const;
    QVariantMap texts() const { return m_texts; }

    // The query whose results are shown.
    TPTextSearch shownSearch() const { return m_shown; }
    int shownMatchCount() const { return m_shownMatchCount; }

public slots:
    void didSelectRow(int row);
    void onRetryTapped(int row);
    void onReloadTapped();
    void onReplaceAllTapped();
    void onLangChangedNotification();

signals:
    void queryChanged();
    void progressChanged();
    void statusChanged();
    void textsChanged();
    // New results are shown.
    void resultsShown();

private:
    void readTexts();
    // Matches the current query on a worker, over the texts read so far.
    void search();
    void showResults(const TPTextSearch &search, const QList<TPSearchRowsModel::Row> &rows,
                     int matchCount, int fileCount);
    void updateStatus();
    TPFileSearch::Texts texts(QStringList *notText) const;

    TPFolderScreen m_folderScreen;
    TPScriptTreeIndex *m_index;
    TPSearchRowsModel *m_rows;
    QString m_query;
    QString m_replacement;
    bool m_regularExpression = false;
    bool m_caseSensitive = false;
    QString m_status;
    QVariantMap m_texts;
    TPTextSearch m_shown;
    int m_shownMatchCount = 0;
    int m_shownFileCount = 0;
    QTimer m_progressDelay;
    // Counts the searches sent to the worker: results are shown only for the newest.
    quint64 m_generation = 0;
};
