#include "editor/tpversionvc.h"

#include "editor/tpeditorvc.h"
#include "engine/tpengineapi.h"
#include "foundation/tplang.h"
#include "foundation/tpwhilealive.h"
#include "platform/tpnavigationstack.h"

TPVersionVC::TPVersionVC(const TPScriptVersion &version, TPViewController *editor, bool deleted,
                         QObject *parent)
    : TPViewController(parent), m_version(version), m_editor(qobject_cast<TPEditorVC *>(editor)),
      m_deleted(deleted), m_lines(new TPTitledRowsModel(this))
{
    setTitle(TPLDateTime(version.time));
}

QUrl TPVersionVC::viewUrl() const
{
    return QUrl(QStringLiteral("qrc:/qt-project.org/imports/TPCompanion/Editor/VersionPage.qml"));
}

QFont TPVersionVC::font() const
{
    return TPEditorVC::editorFont();
}

QString TPVersionVC::restoreTitle() const
{
    return TPL("draft_restore");
}

void TPVersionVC::viewDidLoad()
{
    TPScriptHistory::shared()->contents(m_version.blob, this,
                                        [this](const std::optional<QByteArray> &bytes) {
                                            m_bytes = bytes.value_or(QByteArray());
                                            showLines();
                                            emit loadingChanged();
                                        });
}

void TPVersionVC::showLines()
{
    // Against the editor's text when it is open; on its own otherwise.
    const QByteArray current = m_editor ? TPEngineAPI::scriptData(m_editor->text()) : *m_bytes;
    QList<TPTitledRowsModel::Row> rows;
    for (const TPDiffLine &line : TPScriptHistory::compare(current, *m_bytes)) {
        const QString mark = line.origin == '+'   ? QStringLiteral("added")
                             : line.origin == '-' ? QStringLiteral("removed")
                                                  : QString();
        rows.append({line.text, QString(), mark});
    }
    m_lines->setRows(rows);
}

void TPVersionVC::onRestoreTapped()
{
    if (!m_bytes)
        return;
    if (m_deleted) {
        undelete();
        return;
    }
    const std::optional<QString> text = TPEngineAPI::scriptText(*m_bytes);
    if (!text) {
        saveAsItIs();
        return;
    }
    if (m_editor) {
        m_editor->restoreText(*text);
        returnToEditor();
        return;
    }
    if (TPNavigationStack *stack = navigationController()) {
        auto *editor = new TPEditorVC(m_version.path);
        editor->restoreWhenRead(*text);
        stack->pushViewController(editor);
    }
}

void TPVersionVC::returnToEditor()
{
    TPNavigationStack *stack = navigationController();
    while (stack && m_editor && stack->depth() > 1 && stack->topViewController() != m_editor)
        stack->popViewController();
}

void TPVersionVC::undelete()
{
    const QString path = m_version.path;
    const QByteArray bytes = *m_bytes;
    TPEngineAPI::createScript(
        path, TPWhileAlive(this, [path, bytes](TPVersionVC *self, const TPEngineAPI::Error &error) {
            if (error) {
                self->showAlert(TPL("alert_error"), TPL("err_offline"));
                return;
            }
            TPEngineAPI::saveScriptData(
                path, bytes,
                TPWhileAlive(self, [](TPVersionVC *version, const TPEngineAPI::Error &saveError) {
                    if (saveError) {
                        version->showAlert(TPL("alert_error"), TPL("err_save_fail"));
                        return;
                    }
                    version->m_deleted = false;
                    version->showAlert(TPL("alert_ok"), TPL("history_restored"));
                }));
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
