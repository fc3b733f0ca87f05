#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QThreadPool>

#include <functional>
#include <optional>

// One recorded version of a script: its exact bytes are the blob `blob` of the history.
struct TPScriptVersion
{
    QString path;
    QByteArray blob; // the blob's id, in hex
    QDateTime time;
    qint64 size = 0;
    // Lines added and removed going from the text compared with to this version; -1 when
    // not compared.
    int added = -1;
    int removed = -1;

    friend bool operator==(const TPScriptVersion &, const TPScriptVersion &) = default;
};

// One line of a comparison of two versions: ' ' in both, '-' only in the older, '+' only in
// the newer; or '~', a run of `folded` lines in both that is not shown.
struct TPDiffLine
{
    char origin = ' ';
    QString text;
    int folded = 0;
};

// The local history of every version of every script the app read or saved, kept as a
// bare git repository (libgit2) in the app's data folder: one commit per recorded version,
// the file under its relative path, its path as the commit's first line. Git gives the
// deduplication, compression and diffs, and a format anyone can look into with git.
//
// A file renamed or moved by the app is recorded as a move: a commit that carries the
// file's entry (or every entry under a folder) to its new path, with "moved-from" in its
// message. Versions older than a move are listed under the path it moved them to.
//
// All work runs on one worker thread, in the order it was asked for; results come back on
// the thread of the context object given, unless that object is gone. Nothing here reaches
// the engine. When the repository grows past its limit, the oldest versions go first: it
// is rewritten keeping the newest KeptVersions of each file (fewer if that is still too
// much), then swapped in for the old one.
class TPScriptHistory
{
public:
    static constexpr qint64 DefaultLimitBytes = qint64(64) * 1024 * 1024;
    static constexpr int KeptVersions = 30;

    explicit TPScriptHistory(const QString &folder, qint64 limitBytes = DefaultLimitBytes);
    // Waits for the work asked for.
    ~TPScriptHistory();
    TPScriptHistory(const TPScriptHistory &) = delete;
    TPScriptHistory &operator=(const TPScriptHistory &) = delete;

    // The app's history, in its data folder ("history").
    static TPScriptHistory *shared();

    // Records `bytes` as the newest version of `path`, unless it already is.
    void record(const QString &path, const QByteArray &bytes);
    // Records that the file or folder `from` is now `to`: its versions, and those of every
    // file under it, follow it. `moved`, when given, gets the recorded files' old paths.
    void move(const QString &from, const QString &to, QObject *context = nullptr,
              std::function<void(const QStringList &)> moved = {});
    // Calls `done` once everything asked for before is on disk.
    void whenIdle(QObject *context, std::function<void()> done);
    // The versions of `path`, newest first.
    void versions(const QString &path, QObject *context,
                  std::function<void(const QList<TPScriptVersion> &)> done);
    // The same, the newest MaxCompared of them each compared with `current`.
    static constexpr int MaxCompared = 100;
    void versionsAgainst(const QString &path, const QByteArray &current, QObject *context,
                         std::function<void(const QList<TPScriptVersion> &)> done);
    // The newest version of every file recorded, newest first.
    void files(QObject *context, std::function<void(const QList<TPScriptVersion> &)> done);
    // A version's exact bytes, or none when it is not in the history.
    void contents(const QByteArray &blob, QObject *context,
                  std::function<void(const std::optional<QByteArray> &)> done);
    // Blocks until every piece of work asked for so far is done.
    void waitForIdle();
    // The size of the repository on disk, in bytes.
    qint64 sizeOnDisk() const;
    QString folder() const { return m_folder; }

    // Lines added and removed going from `older` to `newer`.
    static std::pair<int, int> lineChanges(const QByteArray &older, const QByteArray &newer);
    // The lines of `newer` and the lines of `older` it no longer has, as a person reads a
    // diff: the changed lines with `context` unchanged lines around them, each longer
    // unchanged run folded into one '~' line.
    static constexpr int DiffContext = 3;
    static QList<TPDiffLine> diff(const QByteArray &older, const QByteArray &newer,
                                  int context = DiffContext);

private:
    template <typename Result>
    void answer(QObject *context, std::function<void(const Result &)> done,
                std::function<Result()> work);
    QList<TPScriptVersion> versionsNow(const QString &path,
                                       const std::optional<QByteArray> &current) const;
    void recordNow(const QString &path, const QByteArray &bytes);
    QStringList moveNow(const QString &from, const QString &to);
    void keepWithinLimit();

    QString m_folder;
    qint64 m_limitBytes;
    // Known size of the repository, rescanned every few records; -1 before the first scan.
    qint64 m_knownSize = -1;
    int m_recordsSinceScan = 0;
    QThreadPool m_worker;
};
