#pragma once

#include "engine/tpengineapi.h"

#include <QByteArray>
#include <QJsonArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <functional>
#include <utility>

// What a delete took from the engine, kept so that it can be brought back.
struct TPDeletedEntry
{
    QString path;
    bool isFolder = false;
    // The folders to make again, each after the folder it is in: the deleted folder itself
    // and every folder under it.
    QStringList folders;
    // Every file read before the delete, with its exact bytes.
    QList<std::pair<QString, QByteArray>> files;
    // Files whose read failed: the delete went ahead, and they cannot come back.
    QStringList unread;
};

// How a replace of a file's text ended.
enum class TPReplaceOutcome {
    Replaced,
    // An editor open on it has typing that is not saved: the file was left alone.
    UnsavedInEditor,
    // The engine's file is no longer the text the change was made from: left alone.
    ChangedMeanwhile,
    // The engine could not be reached, or refused.
    Failed
};

// The engine operations that lose nothing: a delete that first keeps what it deletes in the
// history, the way back from it, and a rename whose file keeps its history, draft, recent
// and favourite place. Each goes on to its end whatever becomes of the screen that asked;
// only its completion is that screen's to guard.
namespace TPKeptEntries {

using Completion = TPEngineAPI::Completion;
using DeleteCompletion =
    std::function<void(const TPEngineAPI::Error &error, const TPDeletedEntry &kept)>;

// Reads each of `files` (a file's own path, or every file under a folder), records its exact
// bytes in the history and waits until they are on disk, then sends the delete of `path`.
// A read that fails does not stop the delete.
void deleteEntry(const QString &path, bool isFolder, const QStringList &folders,
                 const QStringList &files, DeleteCompletion done);

// Brings a deleted entry back: makes its folders in order, then creates each file and saves
// its bytes. Stops at, and reports, the first failure.
void restore(const TPDeletedEntry &entry, Completion done);

// Creates the file at `path` and saves `bytes` into it: a copy, or a version brought back.
void createWithBytes(const QString &path, const QByteArray &bytes, Completion done);

// Brings one file back from the history: makes the folders above it that `listing` no longer
// holds, then creates it with its bytes.
void restoreFile(const QString &path, const QByteArray &bytes, const QJsonArray &listing,
                 Completion done);

// Sends the rename of `from` to `to`; once the engine accepted it, the history, the drafts and
// the recent and favourite files follow the entry (a folder's files with it).
void rename(const QString &from, const QString &to, Completion done);

// Saves `text` as the file at `path`, made from `expected`: reads the file first, and goes on
// only when the engine still has exactly `expected` and no open editor has unsaved typing in
// it. What the engine had and what was saved are both recorded in the history, and the
// editors open on it take the new text.
void replaceText(const QString &path, const QString &expected, const QString &text,
                 std::function<void(TPReplaceOutcome)> done);

} // namespace TPKeptEntries
