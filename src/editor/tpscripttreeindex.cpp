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

} // namespace

struct TPScriptTreeIndex::File
{
    std::optional<QString> text;
    TPLuaGlobals globals;
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
    if (!m_loaded && m_pendingReads == 0)
        reload();
}

void TPScriptTreeIndex::reload()
{
    if (!isEnabled())
        return;
    const quint64 generation = ++m_generation;
    // The answers still due to an earlier reload will be dropped: only this one's count.
    m_pendingReads = 1;
    QPointer<TPScriptTreeIndex> self(this);
    TPEngineAPI::scriptsWithCompletion(
        [self, generation](const QJsonArray &listing, const TPEngineAPI::Error &error) {
            if (!self || generation != self->m_generation)
                return;
            --self->m_pendingReads;
            if (error) {
                self->settle();
                return;
            }
            self->m_order = self->m_filesOfListing(listing);
            const QSet<QString> listed(self->m_order.cbegin(), self->m_order.cend());
            self->m_files.removeIf(
                [&listed](const auto &file) { return !listed.contains(file.key()); });
            for (const QString &path : std::as_const(self->m_order))
                self->readFile(path);
            self->settle();
        });
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
                                        self->m_files[path].failed = true;
                                        self->settle();
                                        return;
                                    }
                                    self->analyse(path, *bytes);
                                });
}

void TPScriptTreeIndex::analyse(const QString &path, const QByteArray &bytes)
{
    // Decoding and the scope analysis run on the index's own worker, which keeps a luacheck
    // and leaves the shared pool to the syntax check and quick open.
    const quint64 generation = m_generation;
    QPointer<TPScriptTreeIndex> self(this);
    m_worker.start([self, generation, path, bytes] {
        const std::optional<QString> text = TPEngineAPI::scriptText(bytes);
        thread_local TPLuaCheck luacheck;
        const TPLuaGlobals globals = text ? luacheck.globals(*text) : TPLuaGlobals();
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [self, generation, path, text, globals] {
                if (!self || generation != self->m_generation)
                    return;
                --self->m_pendingReads;
                self->m_files[path] = {text, globals, false};
                self->settle();
            },
            Qt::QueuedConnection);
    });
}

void TPScriptTreeIndex::settle()
{
    if (m_pendingReads > 0)
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
    ++m_pendingReads;
    analyse(path, TPEngineAPI::scriptData(text));
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
