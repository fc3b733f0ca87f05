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
// scripts. It reads the listing and then every file, with the described requests, the first
// time an editor asks, and again when asked to reload; a save updates the file it saved. The
// bytes arrive on the engine client's worker, and each text is decoded and analysed on a
// worker thread, so the main thread only files the results.
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
    // The listing or some file is still being read.
    bool loading() const { return m_pendingReads > 0; }
    bool loaded() const { return m_loaded; }

    // The files of the listing, in its order.
    QStringList files() const { return m_order; }
    // A file's text as last read or saved; none when it was not read or is not UTF-8 text.
    std::optional<QString> text(const QString &path) const;
    // The files whose read failed.
    QStringList unread() const;
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
    // Texts or globals changed.
    void changed();

private:
    // A file's text and globals; its whole type is the index's own business.
    struct File;

    void readFile(const QString &path);
    // Decodes a file's bytes and finds its globals, on a worker.
    void analyse(const QString &path, const QByteArray &bytes);
    void settle();
    // Every global the tree uses, with how many times.
    QHash<QString, int> useCounts() const;

    FilesOfListing m_filesOfListing;
    bool m_loaded = false;
    int m_pendingReads = 0;
    // Answers for an older reload are dropped.
    quint64 m_generation = 0;
    QStringList m_order;
    QHash<QString, File> m_files;
    QThreadPool m_worker;
};
