#include "scripts/tpscriptslistvc.h"

#include "editor/tpeditorvc.h"
#include "editor/tphistoryvc.h"
#include "editor/tpopenedfiles.h"
#include "editor/tpscripttreeindex.h"
#include "engine/tpengineapi.h"
#include "foundation/tplang.h"
#include "foundation/tpnotificationcenter.h"
#include "foundation/tppathrules.h"
#include "foundation/tpwhilealive.h"
#include "platform/tpalertcontroller.h"
#include "platform/tpnavigationstack.h"
#include "scripts/tpfolderpickervc.h"
#include "scripts/tplistingdecoder.h"
#include "scripts/tpquickopenvc.h"
#include "scripts/tpscripttree.h"
#include "scripts/tpsearchvc.h"

#include <QPointer>

#include <memory>

TPScriptsListVC::TPScriptsListVC(const QString &folder, QObject *parent)
    : TPViewController(parent), _folder(folder),
      _rows(new TPScriptRowsModel([this](bool isDir) { return rowButtonsForDir(isDir); }, this)),
      m_undoBar(new TPUndoBar(this)), m_runner(new TPFileRunner(this)),
      m_pullToRefresh(new TPPullToRefresh(this))
{
    connect(m_pullToRefresh, &TPPullToRefresh::refreshRequested, this,
            &TPScriptsListVC::onRefreshControlPulled);
    connect(m_runner, &TPFileRunner::runningChanged, _rows, &TPScriptRowsModel::setRunInFlight);
    setTitle(_folder.isEmpty() ? TPL("tab_scripts") : TPLastPathSegment(_folder));
    readTexts();
    // The rows are replaced whole, by a reload or a search.
    connect(_rows, &TPScriptRowsModel::modelReset, this, &TPScriptsListVC::noMatchesChanged);
    connect(this, &TPScriptsListVC::searchTextChanged, this, &TPScriptsListVC::noMatchesChanged);
}

void TPScriptsListVC::readTexts()
{
    m_texts = {{QStringLiteral("delete"), TPL("menu_delete")},
               {QStringLiteral("search"), TPL("list_search")},
               {QStringLiteral("unreachable"), TPL("row_unreachable")},
               {QStringLiteral("refresh"), TPL("list_refresh")},
               {QStringLiteral("add"), TPL("list_add")},
               {QStringLiteral("history"), TPL("history_title")},
               {QStringLiteral("noMatches"), TPL("list_no_matches")},
               {QStringLiteral("clearSearch"), TPL("list_clear_search")},
               {QStringLiteral("quickOpen"), TPL("quickopen_title")},
               {QStringLiteral("searchFiles"), TPL("search_title")}};
    emit textsChanged();
}

TPRowButton TPScriptsListVC::accBtnTitle(const QString &title, TPRowButtonKind::Colour color,
                                         TPRowButtonKind::Action action) const
{
    TPRowButton button;
    button.title = title;
    button.colour = color;
    button.action = action;
    return button;
}

QList<TPRowButton> TPScriptsListVC::rowButtonsForDir(bool isDir) const
{
    QList<TPRowButton> buttons;
    if (!isDir)
        buttons.append(accBtnTitle(TPL("btn_run"), TPRowButtonKind::Tint, TPRowButtonKind::Run));
    TPRowButton more =
        accBtnTitle(QStringLiteral("⋯"), TPRowButtonKind::SecondaryLabel, TPRowButtonKind::More);
    more.accessibleName = TPL("row_more");
    buttons.append(more);
    return buttons;
}

void TPScriptsListVC::onRowButtonTapped(TPRowButtonKind::Action action, int row, QQuickItem *button)
{
    switch (action) {
    case TPRowButtonKind::Run:
        onRunButtonTapped(row);
        break;
    case TPRowButtonKind::More:
        onMoreButtonTapped(row, button);
        break;
    }
}

void TPScriptsListVC::onRowPressedAndHeld(int row, QQuickItem *firstButton,
                                          QQuickItem *secondButton)
{
    const QJsonValue entry = _rows->entryAt(row);
    if (entry.isUndefined())
        return;
    // The menu button comes last: first on a folder's row, which has no Run, else second.
    onMoreButtonTapped(row, TPScriptTree::isFolderEntry(entry) ? firstButton : secondButton);
}

void TPScriptsListVC::clearSearch()
{
    setSearchText(QString());
}

void TPScriptsListVC::setSearchText(const QString &text)
{
    if (m_searchText == text)
        return;
    m_searchText = text;
    _rows->setSearch(text);
    emit searchTextChanged();
}

QUrl TPScriptsListVC::viewUrl() const
{
    return pageUrl();
}

QUrl TPScriptsListVC::pageUrl()
{
    return QUrl(
        QStringLiteral("qrc:/qt-project.org/imports/TPCompanion/Scripts/ScriptsListPage.qml"));
}

void TPScriptsListVC::viewDidLoad()
{
    connect(TPNotificationCenter::defaultCenter(), &TPNotificationCenter::TPLangChanged, this,
            &TPScriptsListVC::onLangChangedNotification);
}

void TPScriptsListVC::onLangChangedNotification()
{
    // A sub-folder's title is a path segment and stays as it is.
    if (_folder.isEmpty())
        setTitle(TPL("tab_scripts"));
    readTexts();
    _rows->retitleButtons();
}

void TPScriptsListVC::viewWillAppear()
{
    reloadData();
}

void TPScriptsListVC::onHistoryTapped()
{
    if (TPNavigationStack *stack = navigationController())
        stack->pushViewController(new TPHistoryVC(TPEditorVC::opener()));
}

void TPScriptsListVC::onRefreshTapped()
{
    reloadData();
    // What the editor and the search know of every file's text is read again with the
    // listing the user asked for.
    if (TPScriptTreeIndex *index = TPScriptTreeIndex::shared(); index->loaded())
        index->reload();
}

void TPScriptsListVC::onRefreshControlPulled()
{
    setRefreshing(true);
    onRefreshTapped();
}

void TPScriptsListVC::setReloadsInFlight(int count)
{
    const bool was = isReloading();
    m_reloadsInFlight = count;
    if (was != isReloading())
        emit reloadingChanged();
}

void TPScriptsListVC::setRefreshing(bool refreshing)
{
    if (_refreshing == refreshing)
        return;
    _refreshing = refreshing;
    emit refreshingChanged();
}

void TPScriptsListVC::reloadData()
{
    setReloadsInFlight(m_reloadsInFlight + 1);
    // A listing may be large: it is decoded while it arrives, off the main thread (see
    // TPEngineSession::BodyReader), and only the folder's children come back to it.
    struct Decoding
    {
        explicit Decoding(const QString &folder) : stream(folder) {}
        TPListingDecoder::Stream stream;
        std::optional<QJsonArray> children;
    };
    auto decoding = std::make_shared<Decoding>(_folder);
    TPEngineAPI::scriptsBodyWithCompletion(
        [decoding](const QByteArray &received, bool complete) {
            if (complete)
                decoding->children = decoding->stream.finish(received);
            else
                decoding->stream.read(received);
        },
        TPWhileAlive(this, [decoding](TPScriptsListVC *self, const QByteArray &,
                                      const TPEngineAPI::Error &error) {
            self->onListingDecoded(error ? std::nullopt : std::move(decoding->children));
        }));
}

void TPScriptsListVC::onListingDecoded(const std::optional<QJsonArray> &children)
{
    setReloadsInFlight(m_reloadsInFlight - 1);
    setRefreshing(false);
    if (!children) {
        // The previous rows stay on screen.
        showOfflineAlert();
        return;
    }
    _rows->setRows(*children);
}

bool TPScriptsListVC::onRowTapped(int row, bool swipedOpen)
{
    if (swipedOpen)
        return true;
    didSelectRow(row);
    return false;
}

void TPScriptsListVC::didSelectRow(int row)
{
    const QJsonValue entry = _rows->entryAt(row);
    if (entry.isUndefined())
        return;
    const QString path = TPEngineAPI::entryPath(entry);
    TPNavigationStack *stack = navigationController();
    if (!stack)
        return;
    if (TPScriptTree::isFolderEntry(entry))
        stack->pushViewController(new TPScriptsListVC(path));
    else
        stack->pushViewController(new TPEditorVC(path));
}

bool TPScriptsListVC::canEditRow(int row) const
{
    return _rows->canEditRow(row);
}

void TPScriptsListVC::commitDeleteRow(int row)
{
    if (!canEditRow(row))
        return;
    // No confirmation, and the row stays until the list is reloaded.
    deleteEntry(TPEngineAPI::entryPath(_rows->entryAt(row)), false);
}

void TPScriptsListVC::deleteEntry(const QString &path, bool isFolder)
{
    const auto done =
        TPWhileAlive(this, [](TPScriptsListVC *self, const TPEngineAPI::Error &error,
                              const TPDeletedEntry &kept) { self->onDeleted(error, kept); });
    if (!isFolder) {
        TPKeptEntries::deleteEntry(path, false, {}, {path}, done);
        return;
    }
    // The list holds only its folder's children: what lies deeper comes from the listing as
    // it is now. Without a listing the folder is deleted all the same, as described.
    TPEngineAPI::scriptsWithCompletion(
        [path, done](const QJsonArray &listing, const TPEngineAPI::Error &) {
            const TPScriptTree::Contents contents = TPScriptTree::contentsOf(path, listing);
            TPKeptEntries::deleteEntry(path, true, contents.folders, contents.files, done);
        });
}

void TPScriptsListVC::onDeleted(const TPEngineAPI::Error &error, const TPDeletedEntry &kept)
{
    if (error) {
        showOfflineAlert();
        return;
    }
    reloadData();
    // A file whose read failed has nothing to come back with.
    if (!kept.isFolder && kept.files.isEmpty())
        return;
    m_undoBar->offer(TPL("undo_deleted").arg(TPLastPathSegment(kept.path)), TPL("undo_action"),
                     TPWhileAlive(this, [kept](TPScriptsListVC *self) {
                         TPKeptEntries::restore(kept, self->reloadOnSuccess());
                     }));
}

TPEngineAPI::Completion TPScriptsListVC::reloadOnSuccess()
{
    return TPWhileAlive(this, [](TPScriptsListVC *self, const TPEngineAPI::Error &error) {
        if (error)
            self->showOfflineAlert();
        else
            self->reloadData();
    });
}

void TPScriptsListVC::onAddTapped(QQuickItem *anchor)
{
    auto *sheet =
        new TPAlertController(QString(), QString(), TPAlertController::Style::ActionSheet);
    sheet->setAnchor(anchor);
    sheet->addAction(TPL("new_file"), TPAlertAction::Style::Default,
                     TPWhileAlive(this, [](TPScriptsListVC *self) {
                         self->promptNameWithTitle(TPL("new_file"), TPL("ph_file_name"), false);
                     }));
    sheet->addAction(TPL("new_folder"), TPAlertAction::Style::Default,
                     TPWhileAlive(this, [](TPScriptsListVC *self) {
                         self->promptNameWithTitle(TPL("new_folder"), TPL("ph_folder_name"), true);
                     }));
    sheet->addAction(TPL("cancel"), TPAlertAction::Style::Cancel);
    presentAlert(sheet);
}

void TPScriptsListVC::promptNameWithTitle(const QString &title, const QString &placeholder,
                                          bool isFolder)
{
    auto *alert = new TPAlertController(title, QString(), TPAlertController::Style::Alert);
    alert->addTextField({QString(), placeholder, false, false});
    alert->addAction(TPL("cancel"), TPAlertAction::Style::Cancel);
    QPointer<TPScriptsListVC> self(this);
    QPointer<TPAlertController> field(alert);
    const QString folder = _folder;
    alert->addAction(TPL("create"), TPAlertAction::Style::Default, [self, field, isFolder, folder] {
        if (!self || !field)
            return;
        const auto path = TPNewEntryPath(folder, field->text(), isFolder);
        if (!path) {
            self->showAlert(TPL("alert_error"), TPL("err_bad_name"));
            return;
        }
        self->createUnlessItExists(TPLastPathSegment(*path), isFolder);
    });
    presentAlert(alert);
}

TPScriptsListVC::Existing TPScriptsListVC::shownEntryAt(const QString &path) const
{
    for (const QJsonValue &entry : _rows->allRows()) {
        if (TPEngineAPI::entryPath(entry) == path)
            return TPScriptTree::isFolderEntry(entry) ? Existing::Folder : Existing::File;
    }
    return Existing::Nothing;
}

void TPScriptsListVC::createUnlessItExists(const QString &name, bool isFolder)
{
    const Existing existing = shownEntryAt(TPJoinPath(_folder, name));
    if (existing == Existing::Nothing)
        createEntryNamed(name, isFolder);
    else if (existing == Existing::File && !isFolder)
        confirmReplace(name);
    else
        showExistsAlert(name);
}

void TPScriptsListVC::confirmReplace(const QString &name)
{
    confirm(TPL("guard_replace_title").arg(name), TPL("guard_replace"),
            [this, name] { createEntryNamed(name, false); });
}

void TPScriptsListVC::showExistsAlert(const QString &name)
{
    showAlert(TPL("alert_error"), TPL("guard_exists").arg(name));
}

void TPScriptsListVC::createEntryNamed(const QString &name, bool isFolder)
{
    const QString path = TPJoinPath(_folder, name);
    const auto done = TPWhileAlive(
        this, [path, isFolder](TPScriptsListVC *self, const TPEngineAPI::Error &error) {
            if (error) {
                self->showOfflineAlert();
            } else if (isFolder) {
                self->reloadData();
            } else if (TPNavigationStack *stack = self->navigationController()) {
                // The list reloads when it is shown again.
                stack->pushViewController(new TPEditorVC(path));
            }
        });
    if (isFolder)
        TPEngineAPI::createFolder(path, done);
    else
        TPEngineAPI::createScript(path, done);
}

void TPScriptsListVC::onRunButtonTapped(int row)
{
    if (!_rows->isRunEnabled(row))
        return;
    m_runner->run(TPEngineAPI::entryPath(_rows->entryAt(row)));
}

void TPScriptsListVC::onMoreButtonTapped(int row, QQuickItem *anchor)
{
    const QJsonValue entry = _rows->entryAt(row);
    if (entry.isUndefined())
        return;
    const QString path = TPEngineAPI::entryPath(entry);
    auto *sheet =
        new TPAlertController(QString(), QString(), TPAlertController::Style::ActionSheet);
    sheet->setAnchor(anchor);
    sheet->addAction(
        TPL("menu_rename"), TPAlertAction::Style::Default,
        TPWhileAlive(this, [path](TPScriptsListVC *self) { self->promptRenameForPath(path); }));
    sheet->addAction(
        TPL("menu_delete"), TPAlertAction::Style::Destructive,
        TPWhileAlive(this, [path, isFolder = TPScriptTree::isFolderEntry(entry)](
                               TPScriptsListVC *self) { self->deleteEntry(path, isFolder); }));
    // Added beside the rename and the delete, which keep their places.
    if (TPEngineAPI::canCarryPath(path)) {
        sheet->addAction(
            TPL("menu_move"), TPAlertAction::Style::Default,
            TPWhileAlive(this, [path](TPScriptsListVC *self) { self->pickFolderToMove(path); }));
        if (!TPScriptTree::isFolderEntry(entry))
            sheet->addAction(
                TPL("menu_duplicate"), TPAlertAction::Style::Default,
                TPWhileAlive(this, [path](TPScriptsListVC *self) { self->duplicateFile(path); }));
    }
    if (!TPScriptTree::isFolderEntry(entry)) {
        const bool favourite = TPOpenedFiles::isFavourite(path);
        sheet->addAction(TPL(favourite ? "menu_favourite_remove" : "menu_favourite_add"),
                         TPAlertAction::Style::Default,
                         [path, favourite] { TPOpenedFiles::setFavourite(path, !favourite); });
    }
    sheet->addAction(TPL("cancel"), TPAlertAction::Style::Cancel);
    presentAlert(sheet);
}

void TPScriptsListVC::duplicateFile(const QString &path)
{
    const QString copy = TPCopyPath(
        path, [this](const QString &taken) { return shownEntryAt(taken) != Existing::Nothing; });
    TPEngineAPI::readScriptData(
        path,
        TPWhileAlive(this, [copy](TPScriptsListVC *self, const std::optional<QByteArray> &bytes,
                                  const TPEngineAPI::Error &error) {
            if (error || !bytes) {
                self->showOfflineAlert();
                return;
            }
            TPKeptEntries::createWithBytes(copy, *bytes, self->reloadOnSuccess());
        }));
}

void TPScriptsListVC::onQuickOpenTapped()
{
    if (TPNavigationStack *stack = navigationController())
        stack->pushViewController(
            new TPQuickOpenVC([](const QString &folder) { return new TPScriptsListVC(folder); }));
}

void TPScriptsListVC::onSearchInFilesTapped()
{
    if (TPNavigationStack *stack = navigationController())
        stack->pushViewController(
            new TPSearchVC([](const QString &folder) { return new TPScriptsListVC(folder); },
                           TPScriptTreeIndex::shared()));
}

void TPScriptsListVC::pickFolderToMove(const QString &path)
{
    if (TPNavigationStack *stack = navigationController())
        stack->pushViewController(new TPFolderPickerVC(path));
}

void TPScriptsListVC::promptRenameForPath(const QString &path)
{
    auto *alert =
        new TPAlertController(TPL("menu_rename"), QString(), TPAlertController::Style::Alert);
    // The name is selected without its extension, ready to be typed over, as file managers
    // do; a folder's whole name is.
    const QString name = TPLastPathSegment(path);
    const qsizetype selected =
        shownEntryAt(path) == Existing::Folder ? name.size() : TPNameStemLength(name);
    alert->addTextField({name, QString(), false, false, 0, int(selected)});
    alert->addAction(TPL("cancel"), TPAlertAction::Style::Cancel);
    QPointer<TPScriptsListVC> self(this);
    QPointer<TPAlertController> field(alert);
    alert->addAction(TPL("alert_ok"), TPAlertAction::Style::Default, [self, field, path] {
        if (!self || !field)
            return;
        const auto destination = TPRenameDestination(path, field->text());
        if (!destination)
            return;
        if (self->shownEntryAt(*destination) != Existing::Nothing) {
            self->showExistsAlert(TPLastPathSegment(*destination));
            return;
        }
        TPKeptEntries::rename(path, *destination, self->reloadOnSuccess());
    });
    presentAlert(alert);
}
