#pragma once

#include "tpdevengine.h"
#include "tptestutil.h"

#include <QDir>
#include <QList>
#include <QTemporaryDir>

#include <memory>
#include <utility>

// The development engine over a new temporary folder, where the app's requests go while it
// lives: real files a test writes and reads back.
class TPServedFolder
{
public:
    // The folder holds `files`, each a path and its bytes; a path ending in "/" is an empty
    // folder. False when a file cannot be written or the engine cannot listen.
    bool serve(const QList<std::pair<QString, QByteArray>> &files)
    {
        m_root = std::make_unique<QTemporaryDir>();
        for (const auto &[path, bytes] : files) {
            if (path.endsWith(u'/') ? !QDir().mkpath(filePath(path))
                                    : !TPWriteFileBytes(filePath(path), bytes))
                return false;
        }
        m_engine = std::make_unique<TPDevEngine>(m_root->path());
        const quint16 port = m_engine->listen(0);
        TPPointEngineAPIAt(port);
        return port != 0;
    }

    QString filePath(const QString &path) const { return m_root->filePath(path); }

    // The engine stops, then the folder goes.
    void reset()
    {
        m_engine.reset();
        m_root.reset();
    }

private:
    std::unique_ptr<QTemporaryDir> m_root;
    std::unique_ptr<TPDevEngine> m_engine;
};
