#include "scripts/tpquickopenvc.h"

#include "editor/tpeditorvc.h"
#include "editor/tpopenedfiles.h"
#include "engine/tpengineapi.h"
#include "foundation/tplang.h"
#include "foundation/tppathrules.h"
#include "foundation/tpwhilealive.h"
#include "platform/tpnavigationstack.h"
#include "scripts/tpopenintree.h"
#include "scripts/tpquickopenmatch.h"
#include "scripts/tpscripttree.h"

#include <QCoreApplication>
#include <QPointer>
#include <QThreadPool>

struct TPQuickOpenVC::Index
{
    QStringList files;
    QList<TPQuickOpenMatch::Key> keys;
    QSet<QString> fileSet;
};

namespace {

// A result's row: its name and its folder, the matched letters in bold.
TPQuickOpenRowsModel::Row resultRow(const QString &path, const QList<qsizetype> &positions)
{
    const qsizetype nameStart = path.lastIndexOf(u'/') + 1;
    const QString folder = TPParentPath(path);
    return {TPQuickOpenMatch::marked(path.mid(nameStart), positions, nameStart),
            folder.isEmpty() ? TPL("tab_scripts").toHtmlEscaped()
                             : TPQuickOpenMatch::marked(folder, positions),
            path,
            false,
            QString(),
            false};
}

} // namespace

TPQuickOpenVC::TPQuickOpenVC(FolderScreen folderScreen, QObject *parent)
    : TPLoadingViewController(parent), m_folderScreen(std::move(folderScreen)),
      m_rows(new TPQuickOpenRowsModel(this)), m_runner(new TPFileRunner(this))
{
    connect(m_runner, &TPFileRunner::runningChanged, m_rows, &TPQuickOpenRowsModel::setRunning);
    setTitle(TPL("quickopen_title"));
    m_texts = {{QStringLiteral("placeholder"), TPL("quickopen_placeholder")},
               {QStringLiteral("noMatches"), TPL("list_no_matches")},
               {QStringLiteral("run"), TPL("btn_run")},
               {QStringLiteral("clear"), TPL("list_clear_search")}};
}

QUrl TPQuickOpenVC::viewUrl() const
{
    return QUrl(
        QStringLiteral("qrc:/qt-project.org/imports/TPCompanion/Scripts/QuickOpenPage.qml"));
}

void TPQuickOpenVC::viewWillAppear()
{
    setLoading(true);
    auto read = std::make_shared<std::shared_ptr<const Index>>();
    TPEngineAPI::scriptsBodyWithCompletion(
        [read](const QByteArray &received, bool complete) {
            if (!complete)
                return;
            const std::optional<QJsonArray> entries = TPEngineAPI::listingEntries(received);
            if (!entries)
                return;
            auto index = std::make_shared<Index>();
            for (const QJsonValue &entry : *entries) {
                const QString path = TPEngineAPI::entryPath(entry);
                if (!path.isEmpty() && !TPScriptTree::isFolderEntry(entry))
                    index->fileSet.insert(path);
            }
            // In the order results keep within a tier.
            index->files = QStringList(index->fileSet.cbegin(), index->fileSet.cend());
            std::sort(index->files.begin(), index->files.end(), TPQuickOpenMatch::comesFirst);
            index->keys.reserve(index->files.size());
            for (const QString &path : std::as_const(index->files))
                index->keys.append(TPQuickOpenMatch::keyOf(path));
            *read = std::move(index);
        },
        TPWhileAlive(
            this, [read](TPQuickOpenVC *self, const QByteArray &, const TPEngineAPI::Error &error) {
                self->setLoading(false);
                if (error || !*read) {
                    self->showOfflineAlert();
                    return;
                }
                self->onIndexRead(*read);
            }));
}

void TPQuickOpenVC::onIndexRead(std::shared_ptr<const Index> index)
{
    m_index = std::move(index);
    // The matches kept count in the listing they came from.
    m_matched = {};
    refresh();
}

void TPQuickOpenVC::setQuery(const QString &query)
{
    if (m_query == query)
        return;
    m_query = query;
    emit queryChanged();
    refresh();
}

void TPQuickOpenVC::refresh()
{
    if (!m_index)
        return;
    const QString folded = TPQuickOpenMatch::keyOf(m_query).folded;
    if (folded.isEmpty()) {
        ++m_generation;
        m_matched = {};
        showShortcuts();
        return;
    }
    const quint64 generation = ++m_generation;
    // Letters added to the shown query narrow its matches: only they are looked at again.
    const std::shared_ptr<const QList<qsizetype>> candidates =
        m_matched.files && folded.startsWith(m_matched.foldedQuery) ? m_matched.files : nullptr;
    QThreadPool::globalInstance()->start([index = m_index, folded, query = m_query, generation,
                                          candidates, self = QPointer(this)] {
        TPQuickOpenMatch::Ranking ranking =
            TPQuickOpenMatch::rank(folded, index->keys, ResultLimit, candidates.get());
        QList<TPQuickOpenRowsModel::Row> rows;
        for (const TPQuickOpenMatch::Ranked &found : std::as_const(ranking.best))
            rows.append(resultRow(index->files.at(found.index), found.match.positions));
        const Matched matched{folded,
                              std::make_shared<const QList<qsizetype>>(std::move(ranking.matched))};
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [self, generation, query, rows, matched] {
                if (!self || generation != self->m_generation)
                    return;
                self->m_matched = matched;
                self->showRows(query, rows);
            },
            Qt::QueuedConnection);
    });
}

void TPQuickOpenVC::showShortcuts()
{
    const QStringList favourites = TPOpenedFiles::favourites();
    QList<TPQuickOpenRowsModel::Row> rows;
    const auto add = [&](const QString &path, const QString &heading) {
        TPQuickOpenRowsModel::Row row = resultRow(path, {});
        row.dimmed = !m_index->fileSet.contains(path);
        row.heading = heading;
        rows.append(row);
    };
    for (qsizetype i = 0; i < favourites.size(); ++i)
        add(favourites.at(i), i == 0 ? TPL("quickopen_favourites") : QString());
    bool first = true;
    for (const QString &path : TPOpenedFiles::recents()) {
        if (favourites.contains(path))
            continue;
        add(path, first ? TPL("quickopen_recents") : QString());
        first = false;
    }
    showRows(QString(), rows);
}

void TPQuickOpenVC::showRows(const QString &query, const QList<TPQuickOpenRowsModel::Row> &rows)
{
    m_shownQuery = query;
    m_rows->setRows(rows);
    emit rowsShown();
}

bool TPQuickOpenVC::noMatches() const
{
    return !m_shownQuery.isEmpty() && m_rows->rowCount() == 0;
}

void TPQuickOpenVC::didSelectRow(int row)
{
    if (row < 0 || row >= m_rows->rowCount() || m_rows->rows().at(row).dimmed)
        return;
    TPNavigationStack *stack = navigationController();
    if (!stack)
        return;
    // This screen is one of those replaced: nothing of it is used after this.
    TPOpenInTree(stack, m_rows->rows().at(row).path, m_folderScreen);
}

void TPQuickOpenVC::onRunTapped(int row)
{
    if (row < 0 || row >= m_rows->rowCount())
        return;
    const TPQuickOpenRowsModel::Row &shown = m_rows->rows().at(row);
    if (!shown.dimmed)
        m_runner->run(shown.path);
}
