#include "editor/tphistoryvc.h"

#include "editor/tpversionvc.h"
#include "engine/tpengineapi.h"
#include "foundation/tplang.h"
#include "foundation/tppathrules.h"
#include "foundation/tpwhilealive.h"
#include "platform/tpnavigationstack.h"

TPHistoryVC::TPHistoryVC(TPEditorOpener opener, QObject *parent)
    : TPLoadingViewController(parent), m_filesMode(true), m_opener(std::move(opener)),
      m_rows(new TPTitledRowsModel(this))
{
    setTitle(TPL("history_title"));
}

TPHistoryVC::TPHistoryVC(const QString &path, TPVersionTarget *editor, TPEditorOpener opener,
                         QObject *parent)
    : TPLoadingViewController(parent), m_filesMode(false), m_path(path), m_editor(editor),
      m_opener(std::move(opener)), m_rows(new TPTitledRowsModel(this))
{
    // One file's versions: the file's name says whose they are.
    setTitle(TPLastPathSegment(path));
}

QUrl TPHistoryVC::viewUrl() const
{
    return QUrl(QStringLiteral("qrc:/qt-project.org/imports/TPCompanion/Editor/HistoryPage.qml"));
}

QString TPHistoryVC::emptyText() const
{
    return TPL("history_empty");
}

void TPHistoryVC::viewWillAppear()
{
    // A restore, a delete or a save elsewhere may have changed what there is to list.
    if (m_filesMode)
        loadFiles();
    else
        loadVersions();
}

bool TPHistoryVC::isDeleted(const QString &path) const
{
    return m_listed && !m_listed->contains(path);
}

void TPHistoryVC::loadFiles()
{
    // Loading until both the history and the engine have answered.
    m_answersAwaited = 2;
    setLoading(true);
    TPScriptHistory::shared()->files(this, [this](const QList<TPScriptVersion> &files) {
        m_entries = files;
        m_filesLoaded = true;
        --m_answersAwaited;
        showFiles();
    });
    TPEngineAPI::scriptsWithCompletion(TPWhileAlive(
        this, [](TPHistoryVC *self, const QJsonArray &entries, const TPEngineAPI::Error &error) {
            // Without a listing nothing is marked deleted: the engine may only be away.
            QSet<QString> listed;
            for (const QJsonValue &entry : entries)
                listed.insert(TPEngineAPI::entryPath(entry));
            if (error)
                self->m_listed.reset();
            else
                self->m_listed = listed;
            --self->m_answersAwaited;
            self->showFiles();
        }));
}

void TPHistoryVC::showFiles()
{
    if (!m_filesLoaded)
        return;
    QList<TPTitledRowsModel::Row> rows;
    for (const TPScriptVersion &file : m_entries) {
        QString detail = TPLDateTime(file.time);
        const bool deleted = isDeleted(file.path);
        if (deleted)
            detail += QStringLiteral(" · ") + TPL("history_deleted");
        rows.append(
            {file.path, detail, deleted ? TPTitledRowsModel::Dimmed : TPTitledRowsModel::Plain});
    }
    m_rows->setRows(rows);
    setLoading(m_answersAwaited > 0);
}

void TPHistoryVC::loadVersions()
{
    setLoading(true);
    const auto shown = [this](const QList<TPScriptVersion> &versions) {
        m_entries = versions;
        showVersions();
    };
    if (m_editor)
        TPScriptHistory::shared()->versionsAgainst(
            m_path, TPEngineAPI::scriptData(m_editor->text()), this, shown);
    else
        TPScriptHistory::shared()->versions(m_path, this, shown);
}

void TPHistoryVC::showVersions()
{
    QList<TPTitledRowsModel::Row> rows;
    const char *against = m_editor ? "history_lines_vs_editor" : "history_lines_vs_newest";
    for (const TPScriptVersion &version : m_entries) {
        QString detail = TPL("history_bytes").arg(version.size);
        if (version.added >= 0)
            detail += QStringLiteral(" · ") + TPL(against).arg(version.added).arg(version.removed);
        rows.append({TPLDateTime(version.time), detail});
    }
    m_rows->setRows(rows);
    setLoading(false);
}

void TPHistoryVC::didSelectRow(int row)
{
    TPNavigationStack *stack = navigationController();
    if (!stack || row < 0 || row >= m_entries.size())
        return;
    const TPScriptVersion &entry = m_entries.at(row);
    if (m_filesMode)
        stack->pushViewController(new TPHistoryVC(entry.path, nullptr, m_opener));
    else
        stack->pushViewController(
            new TPVersionVC(entry, m_editor.get(), m_entries.first(), m_opener));
}
