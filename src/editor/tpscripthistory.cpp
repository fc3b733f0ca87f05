#include "editor/tpscripthistory.h"

#include "foundation/tppathrules.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QHash>
#include <QSet>
#include <QStandardPaths>
#include <QTimeZone>

#include <git2.h>

#include <algorithm>
#include <memory>
#include <tuple>
#include <vector>

namespace {

// The branch every version is committed to.
constexpr auto kBranch = "refs/heads/main";
// How many records go by between two measures of the repository's size.
constexpr int kRecordsBetweenScans = 16;

template <auto Free>
struct GitFree
{
    template <typename T>
    void operator()(T *object) const
    {
        Free(object);
    }
};
using Repository = std::unique_ptr<git_repository, GitFree<git_repository_free>>;
using Commit = std::unique_ptr<git_commit, GitFree<git_commit_free>>;
using Tree = std::unique_ptr<git_tree, GitFree<git_tree_free>>;
using TreeEntry = std::unique_ptr<git_tree_entry, GitFree<git_tree_entry_free>>;
using Index = std::unique_ptr<git_index, GitFree<git_index_free>>;
using Blob = std::unique_ptr<git_blob, GitFree<git_blob_free>>;
using Signature = std::unique_ptr<git_signature, GitFree<git_signature_free>>;
using Patch = std::unique_ptr<git_patch, GitFree<git_patch_free>>;

// libgit2 is set up once for the process and kept: versions may be compared or recorded
// until the very end.
void ensureLibgit2()
{
    static const int initialised = git_libgit2_init();
    Q_UNUSED(initialised);
}

Repository openRepository(const QString &folder, bool create)
{
    ensureLibgit2();
    const QByteArray path = QFile::encodeName(folder);
    git_repository *repository = nullptr;
    if (git_repository_open_bare(&repository, path.constData()) == 0)
        return Repository(repository);
    if (create && git_repository_init(&repository, path.constData(), 1) == 0)
        return Repository(repository);
    return nullptr;
}

QByteArray hex(const git_oid &id)
{
    char text[GIT_OID_HEXSZ + 1] = {};
    git_oid_tostr(text, sizeof text, &id);
    return QByteArray(text);
}

Commit lookupCommit(git_repository *repository, const git_oid &id)
{
    git_commit *commit = nullptr;
    return git_commit_lookup(&commit, repository, &id) == 0 ? Commit(commit) : nullptr;
}

Commit headCommit(git_repository *repository)
{
    git_oid id;
    if (git_reference_name_to_id(&id, repository, kBranch) != 0)
        return nullptr;
    return lookupCommit(repository, id);
}

// What a commit records, from its message: a version (the path on the first line, then
// "bytes N" and "blob HEX" after a blank line) or a move (the new path on the first line,
// then "moved-from OLD").
struct Recorded
{
    std::optional<TPScriptVersion> version;
    // A move: from, to.
    std::optional<std::pair<QString, QString>> move;
};

Recorded recordedBy(const git_commit *commit)
{
    const QList<QByteArray> lines = QByteArray(git_commit_message(commit)).split('\n');
    TPScriptVersion version;
    version.path = QString::fromUtf8(lines.value(0));
    QString movedFrom;
    for (const QByteArray &line : lines) {
        if (line.startsWith("bytes "))
            version.size = line.mid(6).toLongLong();
        else if (line.startsWith("blob "))
            version.blob = line.mid(5);
        else if (line.startsWith("moved-from "))
            movedFrom = QString::fromUtf8(line.mid(11));
    }
    if (version.path.isEmpty())
        return {};
    if (!movedFrom.isEmpty())
        return {std::nullopt, std::make_pair(movedFrom, version.path)};
    if (version.blob.size() != GIT_OID_HEXSZ)
        return {};
    const QTimeZone zone(git_commit_time_offset(commit) * 60);
    version.time = QDateTime::fromSecsSinceEpoch(git_commit_time(commit), zone);
    return {version, std::nullopt};
}

// Every version in the history, newest first, each under the path the moves made since it
// carried it to.
QList<TPScriptVersion> allVersions(git_repository *repository)
{
    QList<TPScriptVersion> versions;
    // The moves met so far, newest first: all of them are newer than what follows.
    QList<std::pair<QString, QString>> moves;
    for (Commit commit = headCommit(repository); commit;) {
        Recorded recorded = recordedBy(commit.get());
        if (recorded.move) {
            moves.append(*recorded.move);
        } else if (recorded.version) {
            QString &path = recorded.version->path;
            // Oldest move first, as they happened.
            for (auto move = moves.crbegin(); move != moves.crend(); ++move)
                path = TPMovedPath(path, move->first, move->second).value_or(path);
            versions.append(*recorded.version);
        }
        git_commit *parent = nullptr;
        commit.reset(git_commit_parent(&parent, commit.get(), 0) == 0 ? parent : nullptr);
    }
    return versions;
}

Signature newSignature(const git_time &when)
{
    git_signature *signature = nullptr;
    if (git_signature_new(&signature, "TP Companion", "tpcompanion@localhost", when.time,
                          when.offset) != 0)
        return nullptr;
    return Signature(signature);
}

git_time timeNow()
{
    const QDateTime now = QDateTime::currentDateTime();
    return {now.toSecsSinceEpoch(), now.offsetFromUtc() / 60, '+'};
}

// Commits the tree `index` holds, on top of `parent` (none for the first), with `message`.
std::optional<git_oid> commitIndex(git_repository *repository, git_index *index,
                                   const git_commit *parent, const QByteArray &message,
                                   const git_time &when)
{
    git_oid treeId;
    git_tree *tree = nullptr;
    if (git_index_write_tree_to(&treeId, index, repository) ||
        git_tree_lookup(&tree, repository, &treeId) != 0)
        return std::nullopt;
    const Tree ownedTree(tree);
    const Signature signature = newSignature(when);
    if (!signature)
        return std::nullopt;
    const git_commit *parents[] = {parent};
    git_oid id;
    if (git_commit_create(&id, repository, kBranch, signature.get(), signature.get(), nullptr,
                          message.constData(), tree, parent ? 1 : 0, parents) != 0)
        return std::nullopt;
    return id;
}

// Commits `blob` as the newest version of `path`, on top of `parent` (none for the first),
// with `when` as its time. The new commit's id, or none.
std::optional<git_oid> commitVersion(git_repository *repository, git_index *index,
                                     const git_commit *parent, const QByteArray &path,
                                     const git_oid &blob, qint64 size, const git_time &when)
{
    git_index_entry entry{};
    entry.mode = GIT_FILEMODE_BLOB;
    entry.id = blob;
    entry.path = path.constData();
    if (git_index_add(index, &entry) != 0)
        return std::nullopt;
    const QByteArray message =
        path + "\n\nbytes " + QByteArray::number(size) + "\nblob " + hex(blob) + '\n';
    return commitIndex(repository, index, parent, message, when);
}

// The head commit's tree read into a new index; an empty index before the first commit.
Index indexOfHead(const git_commit *head)
{
    git_index *index = nullptr;
    if (git_index_new(&index) != 0)
        return nullptr;
    Index owned(index);
    git_tree *tree = nullptr;
    if (head && git_commit_tree(&tree, head) != 0)
        return nullptr;
    const Tree ownedTree(tree);
    if (tree && git_index_read_tree(index, tree) != 0)
        return nullptr;
    return owned;
}

// A path git can hold as it is; any other is not recorded.
bool isRecordablePath(const QString &path)
{
    if (path.isEmpty() || path.contains(u'\n') || path.startsWith(u'/') || path.endsWith(u'/'))
        return false;
    for (const QString &segment : path.split(u'/')) {
        if (segment.isEmpty() || segment == QLatin1String(".") || segment == QLatin1String("..") ||
            segment.compare(QLatin1String(".git"), Qt::CaseInsensitive) == 0)
            return false;
    }
    return true;
}

Patch makePatch(const QByteArray &older, const QByteArray &newer, quint32 contextLines)
{
    ensureLibgit2();
    git_diff_options options = GIT_DIFF_OPTIONS_INIT;
    options.flags = GIT_DIFF_FORCE_TEXT;
    options.context_lines = contextLines;
    git_patch *patch = nullptr;
    if (git_patch_from_buffers(&patch, older.constData(), size_t(older.size()), nullptr,
                               newer.constData(), size_t(newer.size()), nullptr, &options) != 0)
        return nullptr;
    return Patch(patch);
}

// How many lines `bytes` has, a last one without a line break counted.
int lineCount(const QByteArray &bytes)
{
    return int(bytes.count('\n')) + (bytes.isEmpty() || bytes.endsWith('\n') ? 0 : 1);
}

} // namespace

TPScriptHistory::TPScriptHistory(const QString &folder, qint64 limitBytes)
    : m_folder(folder), m_limitBytes(limitBytes)
{
    ensureLibgit2();
    m_worker.setMaxThreadCount(1);
}

TPScriptHistory::~TPScriptHistory()
{
    m_worker.waitForDone();
}

TPScriptHistory *TPScriptHistory::shared()
{
    // Never destroyed: a record may still be under way while static objects go away.
    static TPScriptHistory *const history =
        new TPScriptHistory(QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) +
                            QStringLiteral("/history"));
    return history;
}

void TPScriptHistory::record(const QString &path, const QByteArray &bytes)
{
    m_worker.start([this, path, bytes] {
        recordNow(path, bytes);
        keepWithinLimit();
    });
}

void TPScriptHistory::move(const QString &from, const QString &to, QObject *context,
                           std::function<void(const QStringList &)> moved)
{
    if (!moved) {
        m_worker.start([this, from, to] { moveNow(from, to); });
        return;
    }
    answer<QStringList>(context, std::move(moved), [this, from, to] { return moveNow(from, to); });
}

void TPScriptHistory::whenIdle(QObject *context, std::function<void()> done)
{
    answer<bool>(
        context, [done = std::move(done)](bool) { done(); }, [] { return true; });
}

template <typename Result>
void TPScriptHistory::answer(QObject *context, std::function<void(const Result &)> done,
                             std::function<Result()> work)
{
    QPointer<QObject> receiver(context);
    m_worker.start([receiver, done = std::move(done), work = std::move(work)] {
        Result result = work();
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [receiver, done, result = std::move(result)] {
                if (receiver)
                    done(result);
            },
            Qt::QueuedConnection);
    });
}

QList<TPScriptVersion> TPScriptHistory::versionsNow(const QString &path,
                                                    const std::optional<QByteArray> &current) const
{
    QList<TPScriptVersion> found;
    const Repository repository = openRepository(m_folder, false);
    if (!repository)
        return found;
    // Compared with the text given, or else with the newest version.
    std::optional<QByteArray> other = current;
    for (TPScriptVersion &version : allVersions(repository.get())) {
        if (version.path != path)
            continue;
        git_oid id;
        git_blob *blob = nullptr;
        if (found.size() < MaxCompared && git_oid_fromstr(&id, version.blob.constData()) == 0 &&
            git_blob_lookup(&blob, repository.get(), &id) == 0) {
            const Blob owned(blob);
            const QByteArray bytes =
                QByteArray::fromRawData(static_cast<const char *>(git_blob_rawcontent(blob)),
                                        qsizetype(git_blob_rawsize(blob)));
            if (!other)
                other = QByteArray(bytes.constData(), bytes.size());
            std::tie(version.added, version.removed) = lineChanges(bytes, *other);
        }
        found.append(version);
    }
    return found;
}

void TPScriptHistory::versions(const QString &path, QObject *context,
                               std::function<void(const QList<TPScriptVersion> &)> done)
{
    answer<QList<TPScriptVersion>>(context, std::move(done),
                                   [this, path] { return versionsNow(path, std::nullopt); });
}

void TPScriptHistory::versionsAgainst(const QString &path, const QByteArray &current,
                                      QObject *context,
                                      std::function<void(const QList<TPScriptVersion> &)> done)
{
    answer<QList<TPScriptVersion>>(context, std::move(done),
                                   [this, path, current] { return versionsNow(path, current); });
}

void TPScriptHistory::files(QObject *context,
                            std::function<void(const QList<TPScriptVersion> &)> done)
{
    answer<QList<TPScriptVersion>>(context, std::move(done), [this] {
        QList<TPScriptVersion> newest;
        QSet<QString> seen;
        if (const Repository repository = openRepository(m_folder, false)) {
            for (const TPScriptVersion &version : allVersions(repository.get())) {
                if (!seen.contains(version.path)) {
                    seen.insert(version.path);
                    newest.append(version);
                }
            }
        }
        return newest;
    });
}

void TPScriptHistory::contents(const QByteArray &blob, QObject *context,
                               std::function<void(const std::optional<QByteArray> &)> done)
{
    answer<std::optional<QByteArray>>(
        context, std::move(done), [this, blob]() -> std::optional<QByteArray> {
            const Repository repository = openRepository(m_folder, false);
            git_oid id;
            git_blob *found = nullptr;
            if (!repository || git_oid_fromstrn(&id, blob.constData(), size_t(blob.size())) ||
                git_blob_lookup(&found, repository.get(), &id) != 0)
                return std::nullopt;
            const Blob owned(found);
            return QByteArray(static_cast<const char *>(git_blob_rawcontent(found)),
                              qsizetype(git_blob_rawsize(found)));
        });
}

void TPScriptHistory::waitForIdle()
{
    m_worker.waitForDone();
}

qint64 TPScriptHistory::sizeOnDisk() const
{
    qint64 size = 0;
    QDirIterator files(m_folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        files.next();
        size += files.fileInfo().size();
    }
    return size;
}

void TPScriptHistory::recordNow(const QString &path, const QByteArray &bytes)
{
    if (!isRecordablePath(path))
        return;
    const QByteArray gitPath = path.toUtf8();
    const Repository repository = openRepository(m_folder, true);
    git_oid blob;
    if (!repository || git_blob_create_from_buffer(&blob, repository.get(), bytes.constData(),
                                                   size_t(bytes.size())) != 0)
        return;
    const Commit head = headCommit(repository.get());
    const Index index = indexOfHead(head.get());
    if (!index)
        return;
    // The newest version already has these bytes.
    if (const git_index_entry *entry = git_index_get_bypath(index.get(), gitPath.constData(), 0);
        entry && git_oid_equal(&entry->id, &blob))
        return;
    commitVersion(repository.get(), index.get(), head.get(), gitPath, blob, bytes.size(),
                  timeNow());
}

QStringList TPScriptHistory::moveNow(const QString &from, const QString &to)
{
    QStringList moved;
    // A folder cannot move into itself.
    if (!isRecordablePath(from) || !isRecordablePath(to) || TPMovedPath(to, from, to))
        return moved;
    const Repository repository = openRepository(m_folder, false);
    if (!repository)
        return moved;
    const Commit head = headCommit(repository.get());
    const Index index = indexOfHead(head.get());
    if (!index)
        return moved;
    // The entries under `from`, taken out before any is put back under `to`.
    QList<std::pair<QByteArray, git_oid>> carried;
    for (size_t i = 0; i < git_index_entrycount(index.get()); ++i) {
        const git_index_entry *entry = git_index_get_byindex(index.get(), i);
        const QString path = QString::fromUtf8(entry->path);
        if (const auto carriedTo = TPMovedPath(path, from, to)) {
            moved.append(path);
            carried.append({carriedTo->toUtf8(), entry->id});
        }
    }
    if (moved.isEmpty())
        return moved;
    for (const QString &path : std::as_const(moved))
        git_index_remove(index.get(), path.toUtf8().constData(), 0);
    for (const auto &[path, id] : std::as_const(carried)) {
        git_index_entry entry{};
        entry.mode = GIT_FILEMODE_BLOB;
        entry.id = id;
        entry.path = path.constData();
        if (git_index_add(index.get(), &entry) != 0)
            return {};
    }
    const QByteArray message = to.toUtf8() + "\n\nmoved-from " + from.toUtf8() + '\n';
    if (!commitIndex(repository.get(), index.get(), head.get(), message, timeNow()))
        return {};
    return moved;
}

void TPScriptHistory::keepWithinLimit()
{
    if (m_knownSize < 0 || ++m_recordsSinceScan >= kRecordsBetweenScans) {
        m_knownSize = sizeOnDisk();
        m_recordsSinceScan = 0;
    }
    for (int kept = KeptVersions; m_knownSize > m_limitBytes && kept >= 1; kept /= 2) {
        const Repository old = openRepository(m_folder, false);
        if (!old)
            return;
        // Oldest first, each marked kept when it is among the newest `kept` of its file.
        QList<TPScriptVersion> versions = allVersions(old.get());
        std::reverse(versions.begin(), versions.end());
        QHash<QString, int> left;
        for (const TPScriptVersion &version : versions)
            ++left[version.path];

        const QString rewritten = m_folder + QStringLiteral(".new");
        QDir(rewritten).removeRecursively();
        const Repository fresh = openRepository(rewritten, true);
        git_index *index = nullptr;
        if (!fresh || git_index_new(&index) != 0)
            return;
        const Index ownedIndex(index);
        Commit parent;
        for (const TPScriptVersion &version : versions) {
            if (left[version.path]-- > kept)
                continue;
            git_oid id;
            git_blob *blob = nullptr;
            if (git_oid_fromstr(&id, version.blob.constData()) != 0 ||
                git_blob_lookup(&blob, old.get(), &id) != 0)
                continue;
            const Blob ownedBlob(blob);
            git_oid copied;
            if (git_blob_create_from_buffer(&copied, fresh.get(), git_blob_rawcontent(blob),
                                            size_t(git_blob_rawsize(blob))) != 0)
                return;
            const git_time when{version.time.toSecsSinceEpoch(), version.time.offsetFromUtc() / 60,
                                '+'};
            const auto commit = commitVersion(fresh.get(), index, parent.get(),
                                              version.path.toUtf8(), copied, version.size, when);
            if (!commit)
                return;
            parent = lookupCommit(fresh.get(), *commit);
        }
        // The rewritten history takes the old one's place; a crash in between leaves one of
        // the two whole.
        const QString previous = m_folder + QStringLiteral(".old");
        QDir(previous).removeRecursively();
        if (!QDir().rename(m_folder, previous) || !QDir().rename(rewritten, m_folder))
            return;
        QDir(previous).removeRecursively();
        m_knownSize = sizeOnDisk();
    }
}

std::pair<int, int> TPScriptHistory::lineChanges(const QByteArray &older, const QByteArray &newer)
{
    const Patch patch = makePatch(older, newer, 0);
    size_t context = 0;
    size_t added = 0;
    size_t removed = 0;
    if (!patch || git_patch_line_stats(&context, &added, &removed, patch.get()) != 0)
        return {0, 0};
    return {int(added), int(removed)};
}

QList<TPDiffLine> TPScriptHistory::diff(const QByteArray &older, const QByteArray &newer,
                                        int context)
{
    const Patch patch = makePatch(older, newer, quint32(std::max(0, context)));
    QList<TPDiffLine> lines;
    // How many of the older text's lines the shown lines and folds have gone past.
    int consumed = 0;
    const auto fold = [&lines, &consumed](int upTo) {
        if (upTo > consumed)
            lines.append({'~', QString(), upTo - consumed});
        consumed = std::max(consumed, upTo);
    };
    const size_t hunks = patch ? git_patch_num_hunks(patch.get()) : 0;
    for (size_t hunk = 0; hunk < hunks; ++hunk) {
        const git_diff_hunk *header = nullptr;
        size_t count = 0;
        if (git_patch_get_hunk(&header, &count, patch.get(), hunk) != 0)
            continue;
        // A hunk with no older line stands after line old_start; any other begins on it.
        fold(header->old_lines > 0 ? header->old_start - 1 : header->old_start);
        for (size_t at = 0; at < count; ++at) {
            const git_diff_line *line = nullptr;
            if (git_patch_get_line_in_hunk(&line, patch.get(), hunk, at) != 0 ||
                (line->origin != GIT_DIFF_LINE_CONTEXT && line->origin != GIT_DIFF_LINE_ADDITION &&
                 line->origin != GIT_DIFF_LINE_DELETION))
                continue;
            // The line without its ending.
            QByteArray text(line->content, qsizetype(line->content_len));
            if (text.endsWith('\n'))
                text.chop(1);
            if (text.endsWith('\r'))
                text.chop(1);
            lines.append({line->origin, QString::fromUtf8(text)});
        }
        consumed =
            header->old_lines > 0 ? header->old_start + header->old_lines - 1 : header->old_start;
    }
    fold(lineCount(older));
    return lines;
}
