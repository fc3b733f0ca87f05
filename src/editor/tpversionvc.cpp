#include "editor/tpversionvc.h"

#include "editor/tpeditorfont.h"
#include "editor/tpkeptentries.h"
#include "engine/tpengineapi.h"
#include "foundation/tplang.h"
#include "foundation/tpwhilealive.h"
#include "platform/tpnavigationstack.h"

#include <QRegularExpression>

TPVersionVC::TPVersionVC(const TPScriptVersion &version, TPVersionTarget *editor,
                         const TPScriptVersion &newest, TPEditorOpener opener, QObject *parent)
    : TPViewController(parent), m_version(version), m_newest(newest), m_editor(editor),
      m_opener(std::move(opener)), m_lines(new TPTitledRowsModel(this)),
      m_changes(new TPTitledRowsModel(this))
{
    setTitle(TPLDateTime(version.time));
}

QUrl TPVersionVC::viewUrl() const
{
    return QUrl(QStringLiteral("qrc:/qt-project.org/imports/TPCompanion/Editor/VersionPage.qml"));
}

QFont TPVersionVC::font() const
{
    return TPEditorFont::chosen();
}

QVariantMap TPVersionVC::texts() const
{
    return {{QStringLiteral("restore"), TPL("draft_restore")},
            {QStringLiteral("showText"), TPL("version_text")},
            {QStringLiteral("showChanges"), TPL("version_changes")},
            {QStringLiteral("same"), TPL("diff_none")}};
}

QString TPVersionVC::legend() const
{
    const QString version = TPLDateTime(m_version.time);
    if (m_editor)
        return TPL("diff_legend_editor").arg(version);
    return TPL("diff_legend_newest").arg(version);
}

bool TPVersionVC::noDifferences() const
{
    for (const TPTitledRowsModel::Row &row : m_changes->rows()) {
        if (row.mark == TPTitledRowsModel::Added || row.mark == TPTitledRowsModel::Removed)
            return false;
    }
    return !loading();
}

void TPVersionVC::setShowingChanges(bool showing)
{
    if (m_showingChanges == showing)
        return;
    m_showingChanges = showing;
    emit showingChangesChanged();
}

void TPVersionVC::viewDidLoad()
{
    if (m_editor)
        m_other = TPEngineAPI::scriptData(m_editor->text());
    TPScriptHistory *history = TPScriptHistory::shared();
    history->contents(m_version.blob, this, [this](const std::optional<QByteArray> &bytes) {
        m_bytes = bytes.value_or(QByteArray());
        if (!m_editor && m_newest.blob == m_version.blob)
            m_other = m_bytes;
        showWhenRead();
    });
    if (!m_other && m_newest.blob != m_version.blob)
        history->contents(m_newest.blob, this, [this](const std::optional<QByteArray> &bytes) {
            m_other = bytes.value_or(QByteArray());
            showWhenRead();
        });
}

void TPVersionVC::showWhenRead()
{
    if (loading())
        return;
    // The version's lines as the editor counts them, each shown exactly.
    static const QRegularExpression lineBreak(QStringLiteral("\r\n|[\n\r\u2028\u2029]"));
    QStringList text = QString::fromUtf8(*m_bytes).split(lineBreak);
    if (text.size() > 1 && text.last().isEmpty())
        text.removeLast();
    QList<TPTitledRowsModel::Row> lines;
    for (qsizetype i = 0; i < text.size(); ++i)
        lines.append({text.at(i), QString::number(i + 1)});
    m_lines->setRows(lines);

    QList<TPTitledRowsModel::Row> changes;
    for (const TPDiffLine &line : TPScriptHistory::diff(*m_bytes, *m_other)) {
        switch (line.origin) {
        case '~':
            changes.append(
                {TPL("diff_folded").arg(line.folded), QString(), TPTitledRowsModel::Folded});
            break;
        case '-':
            changes.append({line.text, QString(), TPTitledRowsModel::Removed});
            break;
        case '+':
            changes.append({line.text, QString(), TPTitledRowsModel::Added});
            break;
        default:
            changes.append({line.text, QString()});
        }
    }
    m_changes->setRows(changes);
    emit loadingChanged();
}

void TPVersionVC::onRestoreTapped()
{
    if (!m_bytes)
        return;
    if (m_editor) {
        if (const std::optional<QString> text = TPEngineAPI::scriptText(*m_bytes)) {
            m_editor->restoreText(*text);
            returnToEditor();
        } else {
            saveAsItIs();
        }
        return;
    }
    // Whether the file is still there is asked now: it may have been deleted or brought back
    // since the history was listed.
    TPEngineAPI::scriptsWithCompletion(TPWhileAlive(
        this, [](TPVersionVC *self, const QJsonArray &listing, const TPEngineAPI::Error &error) {
            if (error)
                self->showOfflineAlert();
            else
                self->restoreFromListing(listing);
        }));
}

void TPVersionVC::restoreFromListing(const QJsonArray &listing)
{
    bool listed = false;
    for (const QJsonValue &entry : listing)
        listed = listed || TPEngineAPI::entryPath(entry) == m_version.path;
    if (!listed) {
        undelete(listing);
        return;
    }
    const std::optional<QString> text = TPEngineAPI::scriptText(*m_bytes);
    if (!text) {
        saveAsItIs();
        return;
    }
    if (TPNavigationStack *stack = navigationController(); stack && m_opener)
        stack->pushViewController(m_opener(m_version.path, *text));
}

void TPVersionVC::returnToEditor()
{
    TPNavigationStack *stack = navigationController();
    while (stack && m_editor && stack->depth() > 1 &&
           stack->topViewController() != m_editor->targetScreen())
        stack->popViewController();
}

void TPVersionVC::undelete(const QJsonArray &listing)
{
    TPKeptEntries::restoreFile(
        m_version.path, *m_bytes, listing,
        TPWhileAlive(this, [](TPVersionVC *self, const TPEngineAPI::Error &error) {
            if (error)
                self->showOfflineAlert();
            else
                self->showAlert(TPL("alert_ok"), TPL("history_restored"));
        }));
}

void TPVersionVC::saveAsItIs()
{
    // The confirmation runs only while this screen is there.
    confirm(TPL("history_save_version"), TPL("guard_replace"), [this] {
        TPEngineAPI::saveScriptData(
            m_version.path, *m_bytes,
            TPWhileAlive(this, [](TPVersionVC *self, const TPEngineAPI::Error &error) {
                if (error) {
                    self->showAlert(TPL("alert_error"), TPL("err_save_fail"));
                    return;
                }
                if (self->m_editor)
                    self->m_editor->loadContent();
                self->showAlert(TPL("alert_ok"), TPL("history_restored"));
            }));
    });
}
