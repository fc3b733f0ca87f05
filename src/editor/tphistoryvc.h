#pragma once

#include "editor/tpscripthistory.h"
#include "editor/tpversiontarget.h"
#include "platform/tploadingviewcontroller.h"
#include "platform/tptitledrowsmodel.h"

#include <QSet>
#include <QtQml/qqmlregistration.h>

// The local history: every file the app recorded, newest change first, with the files the
// engine no longer lists dimmed (from the scripts list's bar); or the versions of one file,
// newest first, each with the lines it differs by from the editor's text, or from the newest
// version when no editor is open (from its editor, or from the list of files). Tapping a
// file shows its versions; tapping a version shows it (TPVersionVC), where it can be
// restored. Both are read again each time the screen appears.
class TPHistoryVC : public TPLoadingViewController
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the editor and the scripts list")
    Q_PROPERTY(TPTitledRowsModel *rows READ rows CONSTANT)
    // Shown when there is nothing to list.
    Q_PROPERTY(QString emptyText READ emptyText CONSTANT)

public:
    // Every file recorded. `opener` opens an editor when a version of a file no editor is
    // open on is restored.
    explicit TPHistoryVC(TPEditorOpener opener, QObject *parent = nullptr);
    // The versions of `path`, compared with the text of `editor` and restored into it when an
    // editor is open on the file.
    TPHistoryVC(const QString &path, TPVersionTarget *editor, TPEditorOpener opener,
                QObject *parent = nullptr);

    QUrl viewUrl() const override;
    void viewWillAppear() override;
    TPTitledRowsModel *rows() const { return m_rows; }
    QString emptyText() const;
    // What the rows stand for, in their order: files or versions.
    const QList<TPScriptVersion> &entries() const { return m_entries; }
    bool isDeleted(const QString &path) const;

public slots:
    void didSelectRow(int row);

private:
    void loadFiles();
    void loadVersions();
    void showFiles();
    void showVersions();

    const bool m_filesMode;
    QString m_path;
    TPVersionTargetRef m_editor;
    TPEditorOpener m_opener;
    QList<TPScriptVersion> m_entries;
    // The paths the engine lists, once it has answered; none when it could not.
    std::optional<QSet<QString>> m_listed;
    bool m_filesLoaded = false;
    int m_answersAwaited = 0;
    TPTitledRowsModel *m_rows;
};
