#pragma once

#include <QHash>
#include <QJsonArray>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QThreadPool>

#include <functional>
#include <optional>
#include <utility>

// The texts of the whole script tree, read through the engine client and kept for the
// session, with the globals each script defines and uses: what the editor knows of the other
// scripts, and what the search in all files looks through. It reads the listing and then
// every file, with the described requests, the first time it is asked, and again when asked
// to reload; a save updates the file it saved. Each text is decoded on a worker thread as it
// arrives, so that the texts are all there as soon as the reads are done; finding each
// file's globals (luacheck's scope analysis, some milliseconds a file) follows on the
// index's own worker. The main thread only files the results.
//
// The app switches it on at launch, handing it the tree's rule for which listed entries are
// files; until then it reads nothing, so a screen shown on its own (a test) sends only its
// own requests.
class TPScriptTreeIndex : public QObject
{
    Q_OBJECT

public:
    explicit TPScriptTreeIndex(QObject *parent = nullptr);
    ~TPScriptTreeIndex() override;

    // The app's index.
    static TPScriptTreeIndex *shared();

    using FilesOfListing = std::function<QStringList(const QJsonArray &listing)>;
    void enable(FilesOfListing filesOfListing) { m_filesOfListing = std::move(filesOfListing); }
    bool isEnabled() const { return bool(m_filesOfListing); }
    // Reads the tree once, the first time it is asked (when enabled).
    void ensureLoaded();
    // Reads the listing and every file again; what was read stays until the new reads come.
    void reload();
    // The listing or some file is still being read, or its globals found.
    bool loading() const { return m_pendingReads > 0 || m_pendingAnalyses > 0; }
    bool loaded() const { return m_loaded; }
    // The listing or some file is still being read.
    bool readingTexts() const { return m_pendingReads > 0; }
    // How many of the listing's files have been read (or failed), of how many.
    int filesRead() const { return m_filesRead; }
    int filesToRead() const { return int(m_order.size()); }
    // The last listing asked for did not come.
    bool listingFailed() const { return m_listingFailed; }
    // Reads one file again, after its read failed.
    void retry(const QString &path);

    // The files of the listing, in its order.
    QStringList files() const { return m_order; }
    // A file's text as last read or saved; none when it was not read or is not UTF-8 text.
    std::optional<QString> text(const QString &path) const;
    // The files whose read failed.
    QStringList unread() const;
    // The files read whose bytes are not UTF-8 text.
    QStringList notText() const;
    // A file's text changed on the engine (the editor saved it).
    void fileSaved(const QString &path, const QString &text);

    // For the lint of `path`: every global some script defines, and every global a script
    // other than `path` uses.
    QStringList knownGlobalsFor(const QString &path) const;
    // The globals some script defines, and those scripts use that none defines (the
    // engine's own functions), each with how many times the tree uses it, most used first.
    QList<std::pair<QString, int>> definedGlobals() const;
    QList<std::pair<QString, int>> engineGlobals() const;

signals:
    // Every read and every analysis is done: texts or globals changed.
    void changed();
    // Every read is done: the texts are all there (the globals may still come).
    void textsRead();
    // One more file has been read, or has failed.
    void progressChanged();

private:
    // A file's text and globals; its whole type is the index's own business.
    struct File;

    // Reads the listing's files from `first` on, a batch at a time.
    void readFrom(qsizetype first, quint64 generation);
    void readFile(const QString &path);
    // Decodes a file's bytes, on a worker.
    void decode(const QString &path, const QByteArray &bytes);
    // Files a text and has its globals found, on the index's worker.
    void fileText(const QString &path, const std::optional<QString> &text);
    void analyse(const QString &path, const QString &text);
    void readSettled();
    void settle();
    // Every global the tree uses, with how many times.
    QHash<QString, int> useCounts() const;

    FilesOfListing m_filesOfListing;
    bool m_loaded = false;
    bool m_listingFailed = false;
    int m_pendingReads = 0;
    int m_pendingAnalyses = 0;
    int m_filesRead = 0;
    // Answers for an older reload are dropped.
    quint64 m_generation = 0;
    QStringList m_order;
    QHash<QString, File> m_files;
    QThreadPool m_worker;
};
