#include "editor/tpkeptentries.h"

#include "editor/tpdraftstore.h"
#include "editor/tpopenedfiles.h"
#include "editor/tpopeneditors.h"
#include "editor/tpscripthistory.h"
#include "foundation/tppathrules.h"

#include <QCoreApplication>
#include <QSet>

#include <memory>

namespace {

using Step = std::function<void(TPKeptEntries::Completion next)>;

// Runs `steps` one after the other, each once the one before has succeeded; `done` gets the
// first error, or none once all have run.
void runInOrder(std::shared_ptr<const QList<Step>> steps, qsizetype from,
                TPKeptEntries::Completion done)
{
    if (from >= steps->size()) {
        done(std::nullopt);
        return;
    }
    steps->at(from)([steps, from, done](const TPEngineAPI::Error &error) {
        if (error)
            done(error);
        else
            runInOrder(steps, from + 1, done);
    });
}

void runInOrder(QList<Step> steps, TPKeptEntries::Completion done)
{
    runInOrder(std::make_shared<const QList<Step>>(std::move(steps)), 0, std::move(done));
}

// Every folder above `path`, outermost first.
QStringList foldersAbove(const QString &path)
{
    QStringList folders;
    for (QString folder = TPParentPath(path); !folder.isEmpty(); folder = TPParentPath(folder))
        folders.prepend(folder);
    return folders;
}

// Records what was read, waits for the history to have it, then deletes.
void recordThenDelete(const std::shared_ptr<TPDeletedEntry> &kept,
                      const TPKeptEntries::DeleteCompletion &done)
{
    TPScriptHistory *history = TPScriptHistory::shared();
    for (const auto &[path, bytes] : std::as_const(kept->files))
        history->record(path, bytes);
    history->whenIdle(QCoreApplication::instance(), [kept, done] {
        TPEngineAPI::deleteScript(
            kept->path, [kept, done](const TPEngineAPI::Error &error) { done(error, *kept); });
    });
}

} // namespace

namespace TPKeptEntries {

void deleteEntry(const QString &path, bool isFolder, const QStringList &folders,
                 const QStringList &files, DeleteCompletion done)
{
    auto kept = std::make_shared<TPDeletedEntry>();
    kept->path = path;
    kept->isFolder = isFolder;
    kept->folders = folders;
    if (files.isEmpty()) {
        recordThenDelete(kept, done);
        return;
    }
    // Read all at once; the session queues them over its connections.
    auto waiting = std::make_shared<qsizetype>(files.size());
    for (const QString &file : files) {
        TPEngineAPI::readScriptData(
            file, [kept, waiting, file, done](const std::optional<QByteArray> &bytes,
                                              const TPEngineAPI::Error &error) {
                if (error || !bytes)
                    kept->unread.append(file);
                else
                    kept->files.append({file, *bytes});
                if (--*waiting == 0)
                    recordThenDelete(kept, done);
            });
    }
}

void createWithBytes(const QString &path, const QByteArray &bytes, Completion done)
{
    runInOrder({[path](Completion next) { TPEngineAPI::createScript(path, next); },
                [path, bytes](Completion next) { TPEngineAPI::saveScriptData(path, bytes, next); }},
               std::move(done));
}

void restore(const TPDeletedEntry &entry, Completion done)
{
    QList<Step> steps;
    for (const QString &folder : entry.folders)
        steps.append([folder](Completion next) { TPEngineAPI::createFolder(folder, next); });
    for (const auto &[path, bytes] : entry.files)
        steps.append([path, bytes](Completion next) { createWithBytes(path, bytes, next); });
    runInOrder(std::move(steps), std::move(done));
}

void restoreFile(const QString &path, const QByteArray &bytes, const QJsonArray &listing,
                 Completion done)
{
    QSet<QString> listed;
    for (const QJsonValue &entry : listing)
        listed.insert(TPEngineAPI::entryPath(entry));
    TPDeletedEntry entry{path, false, {}, {{path, bytes}}, {}};
    for (const QString &folder : foldersAbove(path)) {
        if (!listed.contains(folder))
            entry.folders.append(folder);
    }
    restore(entry, std::move(done));
}

void rename(const QString &from, const QString &to, Completion done)
{
    TPEngineAPI::renameScript(from, to, [from, to, done](const TPEngineAPI::Error &error) {
        if (!error) {
            TPOpenedFiles::moved(from, to);
            TPDraftStore::move(from, to);
            // A folder's drafts follow the files the history knows under it.
            TPScriptHistory::shared()->move(
                from, to, QCoreApplication::instance(), [from, to](const QStringList &moved) {
                    for (const QString &path : moved) {
                        if (path != from)
                            TPDraftStore::move(path, *TPMovedPath(path, from, to));
                    }
                });
        }
        done(error);
    });
}

void replaceText(const QString &path, const QString &expected, const QString &text,
                 std::function<void(TPReplaceOutcome)> done)
{
    if (TPOpenEditors::hasUnsavedEdits(path)) {
        done(TPReplaceOutcome::UnsavedInEditor);
        return;
    }
    TPEngineAPI::readScriptData(path, [path, expected, text,
                                       done](const std::optional<QByteArray> &bytes,
                                             const TPEngineAPI::Error &error) {
        if (error || !bytes) {
            done(TPReplaceOutcome::Failed);
            return;
        }
        if (*bytes != TPEngineAPI::scriptData(expected)) {
            done(TPReplaceOutcome::ChangedMeanwhile);
            return;
        }
        // Typing may have begun while the file was read.
        if (TPOpenEditors::hasUnsavedEdits(path)) {
            done(TPReplaceOutcome::UnsavedInEditor);
            return;
        }
        TPScriptHistory::shared()->record(path, *bytes);
        TPEngineAPI::saveScript(path, text, [path, text, done](const TPEngineAPI::Error &saved) {
            if (saved) {
                done(TPReplaceOutcome::Failed);
                return;
            }
            TPScriptHistory::shared()->record(path, TPEngineAPI::scriptData(text));
            TPOpenEditors::savedElsewhere(path, text);
            done(TPReplaceOutcome::Replaced);
        });
    });
}

} // namespace TPKeptEntries
