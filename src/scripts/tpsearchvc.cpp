#include "scripts/tpsearchvc.h"

#include "editor/tpeditorvc.h"
#include "editor/tpscripttreeindex.h"
#include "foundation/tplang.h"
#include "foundation/tpnotificationcenter.h"
#include "foundation/tppathrules.h"
#include "platform/tpnavigationstack.h"
#include "scripts/tpreplacepreviewvc.h"

#include <QCoreApplication>
#include <QPointer>
#include <QThreadPool>

namespace {

// How often the progress of the reads is shown, at most.
constexpr int kProgressIntervalMs = 50;

// How much of a line shows before its match, and at most of the match itself.
constexpr qsizetype kLeadKept = 32;
constexpr qsizetype kMatchKept = 120;

// A match's line as styled text: the line from a little before the match, the match in bold.
QString markedLine(const TPFileMatch &match)
{
    QString lead = match.lineText.left(match.column);
    qsizetype indent = 0;
    while (indent < lead.size() && lead.at(indent).isSpace())
        ++indent;
    lead = lead.mid(indent);
    if (lead.size() > kLeadKept)
        lead = QStringLiteral("…") + lead.right(kLeadKept - 1);
    QString matched = match.lineText.mid(match.column, match.columnLength);
    if (matched.size() > kMatchKept)
        matched = matched.left(kMatchKept - 1) + QStringLiteral("…");
    const QString rest = match.lineText.mid(match.column + match.columnLength, 200);
    return lead.toHtmlEscaped() + QStringLiteral("<b>") + matched.toHtmlEscaped() +
           QStringLiteral("</b>") + rest.toHtmlEscaped();
}

// The words of the rows, in the language of the moment, for the worker that makes them.
struct RowWords
{
    QString root = TPL("tab_scripts");
    QString fileCount = TPL("search_file_count");
    QString more = TPL("search_more");
    QString unread = TPL("search_unread");
    QString notText = TPL("search_not_text");
};

struct Results
{
    QList<TPSearchRowsModel::Row> rows;
    int matchCount = 0;
    int fileCount = 0;
};

// The rows of the results: each file with its matches, then the files that could not be
// read, then those that are not text. Made on the worker, with the words given.
Results resultRows(const QList<TPFileMatches> &found, const QStringList &unread,
                   const QStringList &notText, const RowWords &words)
{
    Results results;
    for (const TPFileMatches &file : found) {
        results.matchCount += file.matchCount;
        ++results.fileCount;
        const QString folder = TPParentPath(file.path);
        TPSearchRowsModel::Row heading;
        heading.kind = TPSearchRowsModel::FileRow;
        heading.title = TPLastPathSegment(file.path);
        heading.detail = (folder.isEmpty() ? words.root : folder) + QStringLiteral(" · ") +
                         words.fileCount.arg(file.matchCount);
        heading.path = file.path;
        results.rows.append(heading);
        for (const TPFileMatch &match : file.matches) {
            TPSearchRowsModel::Row row;
            row.kind = TPSearchRowsModel::MatchRow;
            row.title = markedLine(match);
            row.path = file.path;
            row.line = match.line;
            row.offset = match.offset;
            row.length = match.length;
            results.rows.append(row);
        }
        if (file.matchCount > file.matches.size()) {
            TPSearchRowsModel::Row more;
            more.kind = TPSearchRowsModel::MoreRow;
            more.title = words.more.arg(file.matchCount - file.matches.size());
            more.path = file.path;
            results.rows.append(more);
        }
    }
    for (const QString &path : unread) {
        TPSearchRowsModel::Row row;
        row.kind = TPSearchRowsModel::UnreadRow;
        row.title = path;
        row.detail = words.unread;
        row.path = path;
        results.rows.append(row);
    }
    for (const QString &path : notText) {
        TPSearchRowsModel::Row row;
        row.kind = TPSearchRowsModel::NotTextRow;
        row.title = path;
        row.detail = words.notText;
        row.path = path;
        results.rows.append(row);
    }
    return results;
}

} // namespace

TPSearchVC::TPSearchVC(TPFolderScreen folderScreen, TPScriptTreeIndex *index, QObject *parent)
    : TPViewController(parent), m_folderScreen(std::move(folderScreen)), m_index(index),
      m_rows(new TPSearchRowsModel(this))
{
    readTexts();
    // A thousand files read in a moment would redraw the progress a thousand times: it is
    // shown at once (the count of files as soon as the listing gives it), then at most every
    // few frames.
    m_progressDelay.setSingleShot(true);
    m_progressDelay.setInterval(kProgressIntervalMs);
    connect(&m_progressDelay, &QTimer::timeout, this, [this] {
        emit progressChanged();
        updateStatus();
    });
    connect(m_index, &TPScriptTreeIndex::progressChanged, this, [this] {
        if (m_progressDelay.isActive())
            return;
        emit progressChanged();
        updateStatus();
        m_progressDelay.start();
    });
    connect(m_index, &TPScriptTreeIndex::textsRead, this, [this] {
        m_progressDelay.stop();
        emit progressChanged();
        search();
    });
    connect(TPNotificationCenter::defaultCenter(), &TPNotificationCenter::TPLangChanged, this,
            &TPSearchVC::onLangChangedNotification);
}

QUrl TPSearchVC::viewUrl() const
{
    return QUrl(QStringLiteral("qrc:/qt-project.org/imports/TPCompanion/Scripts/SearchPage.qml"));
}

void TPSearchVC::readTexts()
{
    setTitle(TPL("search_title"));
    m_texts = {{QStringLiteral("find"), TPL("find_placeholder")},
               {QStringLiteral("replace"), TPL("replace_placeholder")},
               {QStringLiteral("regex"), TPL("find_regex")},
               {QStringLiteral("matchCase"), TPL("find_case")},
               {QStringLiteral("caseGlyph"), TPL("find_case_glyph")},
               {QStringLiteral("replaceAll"), TPL("search_replace_all")},
               {QStringLiteral("retry"), TPL("search_retry")},
               {QStringLiteral("reload"), TPL("list_refresh")}};
    emit textsChanged();
}

void TPSearchVC::onLangChangedNotification()
{
    readTexts();
    // The rows' words (counts, folder of the root) follow the language too.
    search();
}

void TPSearchVC::viewWillAppear()
{
    m_index->ensureLoaded();
    // Saves since the last search changed the texts.
    search();
}

void TPSearchVC::setQuery(const QString &query)
{
    if (m_query == query)
        return;
    m_query = query;
    emit queryChanged();
    search();
}

void TPSearchVC::setReplacement(const QString &replacement)
{
    if (m_replacement == replacement)
        return;
    m_replacement = replacement;
    emit queryChanged();
}

void TPSearchVC::setRegularExpression(bool on)
{
    if (m_regularExpression == on)
        return;
    m_regularExpression = on;
    emit queryChanged();
    search();
}

void TPSearchVC::setCaseSensitive(bool on)
{
    if (m_caseSensitive == on)
        return;
    m_caseSensitive = on;
    emit queryChanged();
    search();
}

bool TPSearchVC::reading() const
{
    return m_index->readingTexts();
}

qreal TPSearchVC::progress() const
{
    const int total = m_index->filesToRead();
    return total > 0 ? qreal(m_index->filesRead()) / total : 0;
}

bool TPSearchVC::canReplace() const
{
    return !reading() && m_shownMatchCount > 0 && m_shown.pattern() == m_query &&
           m_shown.regularExpression() == m_regularExpression &&
           m_shown.caseSensitive() == m_caseSensitive;
}

TPFileSearch::Texts TPSearchVC::texts(QStringList *notText) const
{
    TPFileSearch::Texts texts;
    const QStringList files = m_index->files();
    texts.reserve(files.size());
    for (const QString &path : files) {
        if (const std::optional<QString> text = m_index->text(path))
            texts.append({path, *text});
    }
    if (notText)
        *notText = m_index->notText();
    return texts;
}

void TPSearchVC::search()
{
    const quint64 generation = ++m_generation;
    const TPTextSearch query(m_query, m_regularExpression, m_caseSensitive);
    QStringList notText;
    TPFileSearch::Texts snapshot = texts(&notText);
    const QStringList unread = m_index->unread();
    QPointer<TPSearchVC> self(this);
    // The matching and the rows are made on a worker; the main thread only shows them.
    QThreadPool::globalInstance()->start([self, generation, query, snapshot, unread, notText,
                                          words = RowWords()] {
        Results results = resultRows(TPFileSearch::find(snapshot, query), unread, notText, words);
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [self, generation, query, results = std::move(results)] {
                if (self && generation == self->m_generation)
                    self->showResults(query, results.rows, results.matchCount, results.fileCount);
            },
            Qt::QueuedConnection);
    });
}

void TPSearchVC::showResults(const TPTextSearch &search, const QList<TPSearchRowsModel::Row> &rows,
                             int matchCount, int fileCount)
{
    m_shown = search;
    m_shownMatchCount = matchCount;
    m_shownFileCount = fileCount;
    m_rows->setRows(rows);
    updateStatus();
    emit resultsShown();
}

void TPSearchVC::updateStatus()
{
    QString status;
    if (m_index->listingFailed())
        status = TPL("search_listing_failed");
    else if (reading())
        status = TPL("search_reading").arg(m_index->filesRead()).arg(m_index->filesToRead());
    else if (!m_query.isEmpty() && !TPTextSearch(m_query, m_regularExpression, false).isValid())
        status = TPL("search_invalid");
    else if (m_shown.pattern().isEmpty())
        status = QString();
    else if (m_shownMatchCount == 0)
        status = TPL("search_no_matches");
    else
        status = TPL("search_summary").arg(m_shownMatchCount).arg(m_shownFileCount);
    // The status and whether Replace can go both follow the results shown.
    m_status = status;
    emit statusChanged();
}

void TPSearchVC::didSelectRow(int row)
{
    if (row < 0 || row >= m_rows->rowCount())
        return;
    const TPSearchRowsModel::Row &chosen = m_rows->rows().at(row);
    if (chosen.kind != TPSearchRowsModel::MatchRow && chosen.kind != TPSearchRowsModel::FileRow)
        return;
    TPNavigationStack *stack = navigationController();
    if (!stack)
        return;
    const qsizetype offset = chosen.offset;
    const qsizetype length = chosen.length;
    const bool match = chosen.kind == TPSearchRowsModel::MatchRow;
    // The search stays under the editor's folders: Back leads there, not here. This screen
    // is one of those replaced, so nothing of it is used after this.
    TPEditorVC *editor = TPOpenInTree(stack, chosen.path, m_folderScreen);
    if (match)
        editor->selectWhenRead(offset, length);
}

void TPSearchVC::onRetryTapped(int row)
{
    if (row < 0 || row >= m_rows->rowCount() ||
        m_rows->rows().at(row).kind != TPSearchRowsModel::UnreadRow)
        return;
    m_index->retry(m_rows->rows().at(row).path);
}

void TPSearchVC::onReloadTapped()
{
    m_index->reload();
    emit progressChanged();
    updateStatus();
}

void TPSearchVC::onReplaceAllTapped()
{
    if (!canReplace())
        return;
    const TPTextSearch query = m_shown;
    const QString replacement = m_replacement;
    const TPFileSearch::Texts snapshot = texts(nullptr);
    QPointer<TPSearchVC> self(this);
    QThreadPool::globalInstance()->start([self, query, replacement, snapshot] {
        QList<TPFileReplace> changes = TPFileSearch::replace(snapshot, query, replacement);
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [self, changes = std::move(changes)] {
                if (!self)
                    return;
                if (TPNavigationStack *stack = self->navigationController())
                    stack->pushViewController(new TPReplacePreviewVC(changes, self->m_index));
            },
            Qt::QueuedConnection);
    });
}
