#pragma once

#include "editor/tpkeptentries.h"
#include "engine/tpengineapi.h"
#include "platform/tppulltorefresh.h"
#include "platform/tpundobar.h"
#include "platform/tpviewcontroller.h"
#include "scripts/tpfilerunner.h"
#include "scripts/tpscriptrowsmodel.h"

#include <QJsonArray>
#include <QQuickItem>

#include <QtQml/qqmlregistration.h>
#include <optional>

// One folder of the engine's script tree: folders first, then files. Tapping a folder
// pushes another list on it, tapping a file pushes the editor. The whole listing is fetched
// each time the screen comes into view and filtered to the folder's direct children.
class TPScriptsListVC : public TPViewController
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the app and by other lists")
    Q_PROPERTY(TPScriptRowsModel *rows READ rows CONSTANT)
    Q_PROPERTY(bool refreshing READ isRefreshing NOTIFY refreshingChanged)
    // A reload is in flight, from whatever started it.
    Q_PROPERTY(bool reloading READ isReloading NOTIFY reloadingChanged)
    Q_PROPERTY(QString searchText READ searchText WRITE setSearchText NOTIFY searchTextChanged)
    // A search that matches no row says so, instead of an empty list.
    Q_PROPERTY(bool noMatches READ noMatches NOTIFY noMatchesChanged)
    // The screen's own texts by key, in the current language.
    Q_PROPERTY(QVariantMap texts READ texts NOTIFY textsChanged)
    // "Deleted main.lua · Undo", for a few seconds after a delete.
    Q_PROPERTY(TPUndoBar *undoBar READ undoBar CONSTANT)
    Q_PROPERTY(TPPullToRefresh *pullToRefresh READ pullToRefresh CONSTANT)

public:
    explicit TPScriptsListVC(const QString &folder, QObject *parent = nullptr);

    QUrl viewUrl() const override;
    // Every list screen's page: the launch reads it ahead, while the window is being built.
    static QUrl pageUrl();
    void viewWillAppear() override;

    QString folder() const { return _folder; }
    TPScriptRowsModel *rows() const { return _rows; }
    bool isRefreshing() const { return _refreshing; }
    bool isReloading() const { return m_reloadsInFlight > 0; }
    QString searchText() const { return m_searchText; }
    bool noMatches() const { return !m_searchText.isEmpty() && _rows->rowCount() == 0; }
    void setSearchText(const QString &text);
    QVariantMap texts() const { return m_texts; }
    TPUndoBar *undoBar() const { return m_undoBar; }
    TPPullToRefresh *pullToRefresh() const { return m_pullToRefresh; }

    // A row button: its title, its colour in the app's theme and the action it reports to
    // onRowButtonTapped.
    TPRowButton accBtnTitle(const QString &title, TPRowButtonKind::Colour color,
                            TPRowButtonKind::Action action) const;
    // A file's row runs and opens its menu; a folder's row only opens its menu.
    QList<TPRowButton> rowButtonsForDir(bool isDir) const;

    void reloadData();
    void promptNameWithTitle(const QString &title, const QString &placeholder, bool isFolder);
    void createEntryNamed(const QString &name, bool isFolder);
    void promptRenameForPath(const QString &path);
    // Copies the file's exact bytes to the next free copy name in its folder (TPCopyPath),
    // by a create and a save, and reloads.
    void duplicateFile(const QString &path);
    // Shows the folders `path` may move into; choosing one sends the rename.
    void pickFolderToMove(const QString &path);

    // What the listing this screen shows holds at `path`: checked before a create or a
    // rename is sent, so that an existing name is never overwritten without a word.
    enum class Existing { Nothing, File, Folder };
    Existing shownEntryAt(const QString &path) const;

public slots:
    void onLangChangedNotification();

    // The sheet points at `anchor`, the button's own item, on a wide window.
    void onAddTapped(QQuickItem *anchor = nullptr);
    void onRefreshTapped();
    // Every file the app has kept versions of, deleted ones too.
    void onHistoryTapped();
    // Opens any file of the tree by typing part of its path.
    void onQuickOpenTapped();
    void onSearchInFilesTapped();
    // The pull-to-refresh control was pulled: it spins until the next reload ends.
    void onRefreshControlPulled();
    void didSelectRow(int row);
    // A tap on a row: with its Delete swiped open it only closes the swipe (the answer is
    // true: the view closes it); otherwise it selects the row.
    bool onRowTapped(int row, bool swipedOpen);
    bool canEditRow(int row) const;
    // Swipe-to-delete confirmed on a row.
    void commitDeleteRow(int row);
    // The per-row run and menu actions, from the row's buttons. A row number is the number
    // of the row as shown, which a search may narrow.
    void onRunButtonTapped(int row);
    void onMoreButtonTapped(int row, QQuickItem *anchor = nullptr);
    // A row button reports its action and hands its own item, which a menu points at.
    void onRowButtonTapped(TPRowButtonKind::Action action, int row, QQuickItem *button = nullptr);
    // A long press on a row opens its menu, pointing at the row's menu button: its last one
    // (of `firstButton` and `secondButton`, as the row shows them).
    void onRowPressedAndHeld(int row, QQuickItem *firstButton, QQuickItem *secondButton);
    // The search field's clear button.
    void clearSearch();

signals:
    void refreshingChanged();
    void reloadingChanged();
    void searchTextChanged();
    void noMatchesChanged();
    void textsChanged();

protected:
    void viewDidLoad() override;

private:
    void setRefreshing(bool refreshing);
    // Keeps what it deletes in the history first (a folder's every file, from a fresh
    // listing), then deletes, reloads and offers the undo.
    void deleteEntry(const QString &path, bool isFolder);
    void onDeleted(const TPEngineAPI::Error &error, const TPDeletedEntry &kept);
    // Creates `name` when the shown listing has nothing there; asks first before a new
    // file replaces a file, and refuses a name a folder or a file already has.
    void createUnlessItExists(const QString &name, bool isFolder);
    void confirmReplace(const QString &name);
    void showExistsAlert(const QString &name);
    // A completion that reloads the list on success and shows the offline alert on failure;
    // it does nothing once the screen is gone.
    TPEngineAPI::Completion reloadOnSuccess();
    void setReloadsInFlight(int count);
    // A reload's end: the folder's children, or nothing when the listing failed.
    void onListingDecoded(const std::optional<QJsonArray> &children);
    void readTexts();

    QString _folder;
    // The folder's current children, in display order.
    TPScriptRowsModel *_rows;
    bool _refreshing = false;
    int m_reloadsInFlight = 0;
    QString m_searchText;
    QVariantMap m_texts;
    TPUndoBar *m_undoBar;
    TPFileRunner *m_runner;
    TPPullToRefresh *m_pullToRefresh;
};
