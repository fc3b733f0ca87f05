#include "scripts/tpfolderpickervc.h"

#include "editor/tpkeptentries.h"
#include "engine/tpengineapi.h"
#include "foundation/tplang.h"
#include "foundation/tppathrules.h"
#include "foundation/tpwhilealive.h"
#include "platform/tpnavigationstack.h"
#include "scripts/tpscripttree.h"

namespace {

// The row mark of the folder the entry is in now.
constexpr TPTitledRowsModel::Mark kCurrentFolderMark = TPTitledRowsModel::Dimmed;

} // namespace

TPFolderPickerVC::TPFolderPickerVC(const QString &moving, QObject *parent)
    : TPLoadingViewController(parent), m_moving(moving), m_rows(new TPTitledRowsModel(this))
{
    setTitle(TPL("move_title"));
}

QUrl TPFolderPickerVC::viewUrl() const
{
    return QUrl(
        QStringLiteral("qrc:/qt-project.org/imports/TPCompanion/Scripts/FolderPickerPage.qml"));
}

void TPFolderPickerVC::viewWillAppear()
{
    setLoading(true);
    TPEngineAPI::scriptsWithCompletion(
        TPWhileAlive(this, [](TPFolderPickerVC *self, const QJsonArray &entries,
                              const TPEngineAPI::Error &error) {
            self->setLoading(false);
            if (error)
                self->showOfflineAlert();
            else
                self->showTargets(entries);
        }));
}

void TPFolderPickerVC::showTargets(const QJsonArray &listing)
{
    m_listing = listing;
    m_targets = TPScriptTree::moveTargets(listing, m_moving);
    const QString current = TPParentPath(m_moving);
    QList<TPTitledRowsModel::Row> rows;
    for (const QString &folder : std::as_const(m_targets))
        rows.append({folder.isEmpty() ? TPL("tab_scripts") : folder, QString(),
                     folder == current ? kCurrentFolderMark : TPTitledRowsModel::Plain});
    m_rows->setRows(rows);
}

void TPFolderPickerVC::didSelectRow(int row)
{
    if (row < 0 || row >= m_targets.size() || m_targets.at(row) == TPParentPath(m_moving))
        return;
    const QString name = TPLastPathSegment(m_moving);
    const QString destination = TPJoinPath(m_targets.at(row), name);
    for (const QJsonValue &entry : std::as_const(m_listing)) {
        if (TPEngineAPI::entryPath(entry) == destination) {
            showAlert(TPL("alert_error"), TPL("guard_exists").arg(name));
            return;
        }
    }
    TPKeptEntries::rename(
        m_moving, destination,
        TPWhileAlive(this, [](TPFolderPickerVC *self, const TPEngineAPI::Error &error) {
            if (error) {
                self->showOfflineAlert();
                return;
            }
            // The list under it reloads as it comes back into view.
            if (TPNavigationStack *stack = self->navigationController())
                stack->popViewController();
        }));
}
