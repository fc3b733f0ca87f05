#include "scripts/tpreplacepreviewvc.h"

#include "editor/tpkeptentries.h"
#include "editor/tpopeneditors.h"
#include "editor/tpscripttreeindex.h"
#include "foundation/tplang.h"
#include "foundation/tppathrules.h"
#include "platform/tpnavigationstack.h"

#include <QPointer>

TPReplacePreviewVC::TPReplacePreviewVC(const QList<TPFileReplace> &changes,
                                       TPScriptTreeIndex *index, QObject *parent)
    : TPViewController(parent), m_changes(changes), m_index(index),
      m_rows(new TPSearchRowsModel(this))
{
    setTitle(TPL("replace_preview_title"));
    m_texts = {{QStringLiteral("apply"), TPL("replace_apply")},
               {QStringLiteral("include"), TPL("replace_include")}};
    QList<TPSearchRowsModel::Row> rows;
    for (const TPFileReplace &file : changes) {
        const bool unsaved = TPOpenEditors::hasUnsavedEdits(file.path);
        const QString folder = TPParentPath(file.path);
        TPSearchRowsModel::Row heading;
        heading.kind = TPSearchRowsModel::FileRow;
        heading.title = TPLastPathSegment(file.path);
        heading.detail = (folder.isEmpty() ? TPL("tab_scripts") : folder) + QStringLiteral(" · ") +
                         TPL("replace_file_count").arg(file.replaced);
        if (unsaved)
            heading.detail += QStringLiteral("\n") + TPL("replace_unsaved");
        heading.path = file.path;
        heading.included = !unsaved;
        heading.includable = !unsaved;
        rows.append(heading);
        for (const TPLineChange &change : file.changes) {
            rows.append({TPSearchRowsModel::BeforeRow, change.before, QString(), file.path,
                         change.line, 0, 0, false, false});
            rows.append({TPSearchRowsModel::AfterRow, change.after, QString(), file.path,
                         change.line, 0, 0, false, false});
        }
    }
    m_rows->setRows(rows);
}

QUrl TPReplacePreviewVC::viewUrl() const
{
    return QUrl(
        QStringLiteral("qrc:/qt-project.org/imports/TPCompanion/Scripts/ReplacePreviewPage.qml"));
}

bool TPReplacePreviewVC::canApply() const
{
    return !m_applying && std::any_of(m_rows->rows().cbegin(), m_rows->rows().cend(),
                                      [](const TPSearchRowsModel::Row &row) {
                                          return row.kind == TPSearchRowsModel::FileRow &&
                                                 row.included;
                                      });
}

void TPReplacePreviewVC::setIncluded(int row, bool included)
{
    if (m_applying || row < 0 || row >= m_rows->rowCount())
        return;
    const TPSearchRowsModel::Row &file = m_rows->rows().at(row);
    if (file.kind != TPSearchRowsModel::FileRow || !file.includable)
        return;
    m_rows->setIncluded(row, included);
    emit stateChanged();
}

void TPReplacePreviewVC::onApplyTapped()
{
    if (!canApply())
        return;
    auto queue = std::make_shared<QList<TPFileReplace>>();
    for (const TPSearchRowsModel::Row &row : m_rows->rows()) {
        if (row.kind != TPSearchRowsModel::FileRow || !row.included)
            continue;
        for (const TPFileReplace &change : std::as_const(m_changes)) {
            if (change.path == row.path)
                queue->append(change);
        }
    }
    m_applying = true;
    applyNext(queue, std::make_shared<Outcome>(), int(queue->size()));
}

void TPReplacePreviewVC::applyNext(std::shared_ptr<QList<TPFileReplace>> queue,
                                   std::shared_ptr<Outcome> outcome, int total)
{
    if (queue->isEmpty()) {
        finish(*outcome);
        return;
    }
    m_status = TPL("replace_applying").arg(total - queue->size() + 1).arg(total);
    emit stateChanged();
    const TPFileReplace change = queue->takeFirst();
    // Each file goes on to its end; only what follows is this screen's.
    QPointer<TPReplacePreviewVC> self(this);
    QPointer<TPScriptTreeIndex> index(m_index);
    TPKeptEntries::replaceText(
        change.path, change.before, change.after,
        [self, index, queue, outcome, total, change](TPReplaceOutcome result) {
            switch (result) {
            case TPReplaceOutcome::Replaced:
                outcome->replaced += change.replaced;
                outcome->files.append(change.path);
                if (index)
                    index->fileSaved(change.path, change.after);
                break;
            case TPReplaceOutcome::UnsavedInEditor:
                outcome->unsaved.append(change.path);
                break;
            case TPReplaceOutcome::ChangedMeanwhile:
                outcome->changedMeanwhile.append(change.path);
                break;
            case TPReplaceOutcome::Failed:
                outcome->failed.append(change.path);
                break;
            }
            if (self)
                self->applyNext(queue, outcome, total);
        });
}

void TPReplacePreviewVC::finish(const Outcome &outcome)
{
    m_applying = false;
    m_status.clear();
    emit stateChanged();
    emit applied(outcome);
    QStringList lines{TPL("replace_done").arg(outcome.replaced).arg(outcome.files.size())};
    if (!outcome.unsaved.isEmpty())
        lines.append(TPL("replace_unsaved") + QStringLiteral(": ") +
                     outcome.unsaved.join(QStringLiteral(", ")));
    if (!outcome.changedMeanwhile.isEmpty())
        lines.append(
            TPL("replace_changed").arg(outcome.changedMeanwhile.join(QStringLiteral(", "))));
    if (!outcome.failed.isEmpty())
        lines.append(TPL("replace_failed").arg(outcome.failed.join(QStringLiteral(", "))));
    // The summary stays up over the search, which searches again as it appears.
    showAlert(TPL("search_title"), lines.join(u'\n'));
    TPNavigationStack *stack = navigationController();
    if (stack && stack->topViewController() == this)
        stack->popViewController();
}
