#include "editor/tpscripttreeindex.h"

#include "editing/tpluacheck.h"
#include "engine/tpengineapi.h"

#include <QCoreApplication>
#include <QPointer>
#include <QSet>
#include <QThreadPool>

#include <algorithm>

namespace {

// Most used first, then by name.
QList<std::pair<QString, int>> byUse(QList<std::pair<QString, int>> names)
{
    std::sort(names.begin(), names.end(), [](const auto &a, const auto &b) {
        return a.second != b.second ? a.second > b.second : a.first < b.first;
    });
    return names;
}

// How many reads are asked for at a time.
constexpr qsizetype kReadBatch = 50;

} // namespace

struct TPScriptTreeIndex::File
{
    std::optional<QString> text;
    TPLuaGlobals globals;
    // Read, whether its bytes are text or not.
    bool read = false;
    bool failed = false;
};

TPScriptTreeIndex::TPScriptTreeIndex(QObject *parent) : QObject(parent)
{
    m_worker.setMaxThreadCount(1);
    // The thread, and the luacheck it keeps, last as long as the index.
    m_worker.setExpiryTimeout(-1);
}

TPScriptTreeIndex::~TPScriptTreeIndex()
{
    m_worker.waitForDone();
}

TPScriptTreeIndex *TPScriptTreeIndex::shared()
{
    static TPScriptTreeIndex *const index = new TPScriptTreeIndex(QCoreApplication::instance());
    return index;
}

void TPScriptTreeIndex::ensureLoaded()
{
    if (!m_loaded && !loading())
        reload();
}

void TPScriptTreeIndex::reload()
{
    if (!isEnabled())
        return;
    const quint64 generation = ++m_generation;
    // The answers still due to an earlier reload will be dropped: only this one's count.
    m_pendingReads = 1;
    m_pendingAnalyses = 0;
    m_filesRead = 0;
    QPointer<TPScriptTreeIndex> self(this);
    TPEngineAPI::scriptsWithCompletion(
        [self, generation](const QJsonArray &listing, const TPEngineAPI::Error &error) {
            if (!self || generation != self->m_generation)
                return;
            --self->m_pendingReads;
            self->m_listingFailed = bool(error);
            if (error) {
                self->readSettled();
                return;
            }
            self->m_order = self->m_filesOfListing(listing);
            const QSet<QString> listed(self->m_order.cbegin(), self->m_order.cend());
            self->m_files.removeIf(
                [&listed](const auto &file) { return !listed.contains(file.key()); });
            self->readFrom(0, generation);
            emit self->progressChanged();
        });
}

void TPScriptTreeIndex::readFrom(qsizetype first, quint64 generation)
{
    if (generation != m_generation)
        return;
    // Asking for a thousand files at once holds the main thread up for a frame or two: the
    // requests go out a batch at a time, each batch counted as a read until it is sent.
    const qsizetype end = std::min(first + kReadBatch, m_order.size());
    for (qsizetype at = first; at < end; ++at)
        readFile(m_order.at(at));
    if (end < m_order.size()) {
        ++m_pendingReads;
        QMetaObject::invokeMethod(
            this,
            [this, end, generation] {
                if (generation != m_generation)
                    return;
                --m_pendingReads;
                readFrom(end, generation);
            },
            Qt::QueuedConnection);
        return;
    }
    readSettled();
}

void TPScriptTreeIndex::retry(const QString &path)
{
    if (!isEnabled() || !m_files.value(path).failed)
        return;
    m_files[path].failed = false;
    --m_filesRead;
    readFile(path);
    emit progressChanged();
}

void TPScriptTreeIndex::readFile(const QString &path)
{
    ++m_pendingReads;
    const quint64 generation = m_generation;
    QPointer<TPScriptTreeIndex> self(this);
    TPEngineAPI::readScriptData(path,
                                [self, generation, path](const std::optional<QByteArray> &bytes,
                                                         const TPEngineAPI::Error &error) {
                                    if (!self || generation != self->m_generation)
                                        return;
                                    if (error || !bytes) {
                                        --self->m_pendingReads;
                                        ++self->m_filesRead;
                                        self->m_files[path].failed = true;
                                        emit self->progressChanged();
                                        self->readSettled();
                                        return;
                                    }
                                    self->decode(path, *bytes);
                                });
}

void TPScriptTreeIndex::decode(const QString &path, const QByteArray &bytes)
{
    const quint64 generation = m_generation;
    QPointer<TPScriptTreeIndex> self(this);
    QThreadPool::globalInstance()->start([self, generation, path, bytes] {
        const std::optional<QString> text = TPEngineAPI::scriptText(bytes);
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [self, generation, path, text] {
                if (!self || generation != self->m_generation)
                    return;
                --self->m_pendingReads;
                ++self->m_filesRead;
                self->fileText(path, text);
                emit self->progressChanged();
                self->readSettled();
            },
            Qt::QueuedConnection);
    });
}

void TPScriptTreeIndex::fileText(const QString &path, const std::optional<QString> &text)
{
    File &file = m_files[path];
    file.text = text;
    file.read = true;
    file.failed = false;
    if (text) {
        analyse(path, *text);
    } else {
        file.globals = {};
    }
}

void TPScriptTreeIndex::analyse(const QString &path, const QString &text)
{
    // The scope analysis runs on the index's own worker, which keeps a luacheck and leaves
    // the shared pool to the syntax check, quick open and the search.
    ++m_pendingAnalyses;
    const quint64 generation = m_generation;
    QPointer<TPScriptTreeIndex> self(this);
    m_worker.start([self, generation, path, text] {
        thread_local TPLuaCheck luacheck;
        const TPLuaGlobals globals = luacheck.globals(text);
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [self, generation, path, globals] {
                if (!self || generation != self->m_generation)
                    return;
                --self->m_pendingAnalyses;
                const auto file = self->m_files.find(path);
                if (file != self->m_files.end())
                    file->globals = globals;
                self->settle();
            },
            Qt::QueuedConnection);
    });
}

void TPScriptTreeIndex::readSettled()
{
    if (m_pendingReads > 0)
        return;
    emit textsRead();
    settle();
}

void TPScriptTreeIndex::settle()
{
    if (loading())
        return;
    m_loaded = true;
    emit changed();
}

void TPScriptTreeIndex::fileSaved(const QString &path, const QString &text)
{
    if (!isEnabled())
        return;
    if (!m_order.contains(path))
        m_order.append(path);
    fileText(path, text);
}

std::optional<QString> TPScriptTreeIndex::text(const QString &path) const
{
    const auto found = m_files.constFind(path);
    return found == m_files.constEnd() ? std::nullopt : found->text;
}

QStringList TPScriptTreeIndex::unread() const
{
    QStringList failed;
    for (const QString &path : m_order) {
        if (m_files.value(path).failed)
            failed.append(path);
    }
    return failed;
}

QStringList TPScriptTreeIndex::notText() const
{
    QStringList files;
    for (const QString &path : m_order) {
        const auto found = m_files.constFind(path);
        if (found != m_files.constEnd() && found->read && !found->text)
            files.append(path);
    }
    return files;
}

QHash<QString, int> TPScriptTreeIndex::useCounts() const
{
    QHash<QString, int> counts;
    for (const File &file : m_files) {
        for (const auto &[name, count] : file.globals.used)
            counts[name] += count;
    }
    return counts;
}

QStringList TPScriptTreeIndex::knownGlobalsFor(const QString &path) const
{
    QSet<QString> known;
    for (auto file = m_files.cbegin(); file != m_files.cend(); ++file) {
        for (const QString &name : file->globals.defined)
            known.insert(name);
        if (file.key() == path)
            continue;
        for (const auto &[name, count] : file->globals.used)
            known.insert(name);
    }
    QStringList names(known.cbegin(), known.cend());
    names.sort();
    return names;
}

QList<std::pair<QString, int>> TPScriptTreeIndex::definedGlobals() const
{
    const QHash<QString, int> counts = useCounts();
    QSet<QString> defined;
    for (const File &file : m_files)
        defined.unite(QSet<QString>(file.globals.defined.cbegin(), file.globals.defined.cend()));
    QList<std::pair<QString, int>> names;
    for (const QString &name : std::as_const(defined))
        names.append({name, counts.value(name)});
    return byUse(names);
}

QList<std::pair<QString, int>> TPScriptTreeIndex::engineGlobals() const
{
    QSet<QString> defined;
    for (const File &file : m_files)
        defined.unite(QSet<QString>(file.globals.defined.cbegin(), file.globals.defined.cend()));
    QList<std::pair<QString, int>> names;
    const QHash<QString, int> counts = useCounts();
    for (auto used = counts.cbegin(); used != counts.cend(); ++used) {
        if (!defined.contains(used.key()))
            names.append({used.key(), used.value()});
    }
    return byUse(names);
}
