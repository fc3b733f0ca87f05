#pragma once

#include "editor/tpscripthistory.h"
#include "editor/tpversiontarget.h"
#include "platform/tptitledrowsmodel.h"
#include "platform/tpviewcontroller.h"

#include <QFont>
#include <QtQml/qqmlregistration.h>

#include <optional>

// One version from the history, read-only. It shows either the version's own text, line by
// line, or its differences from the editor's text (from the file's newest version when no
// editor is open) as a diff: a "removed" line is only in this version, an "added" line only
// in the other text, and long unchanged runs are folded, under a legend naming both sides.
//
// Restore puts the version in the editor as one undoable edit, unsaved (opening the editor
// when it is not open); a file the engine no longer lists is created again, with any folder
// above it that is gone, and given the version's bytes; a version that is not text, which no
// editor can hold, is saved as it is once the user agrees.
class TPVersionVC : public TPViewController
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the history")
    // The version's text, a row per line, its number as the detail.
    Q_PROPERTY(TPTitledRowsModel *lines READ lines CONSTANT)
    // The diff: marks Removed, Added, Folded (the title says how many lines) or Plain.
    Q_PROPERTY(TPTitledRowsModel *changes READ changes CONSTANT)
    Q_PROPERTY(bool showingChanges READ showingChanges WRITE setShowingChanges NOTIFY
                   showingChangesChanged)
    Q_PROPERTY(QString legend READ legend NOTIFY loadingChanged)
    // The version is the same as the text it is compared with.
    Q_PROPERTY(bool noDifferences READ noDifferences NOTIFY loadingChanged)
    // The screen's own texts by key: restore, showText, showChanges, same.
    Q_PROPERTY(QVariantMap texts READ texts CONSTANT)
    Q_PROPERTY(bool loading READ loading NOTIFY loadingChanged)
    // The editor's font, so that a version reads as the script does.
    Q_PROPERTY(QFont font READ font CONSTANT)

public:
    // `newest` is the file's newest version, which the version is compared with when no
    // editor is open; `opener` opens one to restore into then.
    TPVersionVC(const TPScriptVersion &version, TPVersionTarget *editor,
                const TPScriptVersion &newest, TPEditorOpener opener, QObject *parent = nullptr);

    QUrl viewUrl() const override;
    TPTitledRowsModel *lines() const { return m_lines; }
    TPTitledRowsModel *changes() const { return m_changes; }
    bool showingChanges() const { return m_showingChanges; }
    void setShowingChanges(bool showing);
    QString legend() const;
    bool noDifferences() const;
    QVariantMap texts() const;
    bool loading() const { return !m_bytes || !m_other; }
    QFont font() const;
    const std::optional<QByteArray> &bytes() const { return m_bytes; }

public slots:
    void onRestoreTapped();

signals:
    void loadingChanged();
    void showingChangesChanged();

protected:
    void viewDidLoad() override;

private:
    void showWhenRead();
    void restoreFromListing(const QJsonArray &listing);
    void undelete(const QJsonArray &listing);
    void saveAsItIs();
    // Back to the editor the history was opened from.
    void returnToEditor();

    TPScriptVersion m_version;
    TPScriptVersion m_newest;
    // The editor open on the file, if any.
    TPVersionTargetRef m_editor;
    TPEditorOpener m_opener;
    std::optional<QByteArray> m_bytes;
    // What the version is compared with: the editor's text, or the newest version.
    std::optional<QByteArray> m_other;
    TPTitledRowsModel *m_lines;
    TPTitledRowsModel *m_changes;
    bool m_showingChanges = false;
};
