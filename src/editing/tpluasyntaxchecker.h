#pragma once

#include "editing/tpluasyntaxcheck.h"

#include <QObject>
#include <QTimer>

#include <functional>

// Checks a script's syntax once typing pauses: each change restarts a 0.6 s wait, and when
// it ends the text of that moment is compiled on a worker thread. Only the newest check's
// result is kept; an older one that comes back late says nothing about the text now.
class TPLuaSyntaxChecker : public QObject
{
    Q_OBJECT

public:
    static constexpr int DelayMs = 600;

    // `chunkName` starts the compiler's messages; `text` gives the text to check when the
    // wait ends (it is shared, not copied, with the worker).
    TPLuaSyntaxChecker(const QString &chunkName, std::function<QString()> text,
                       QObject *parent = nullptr);

    // The text changed: the wait starts again.
    void textChanged() { m_delay.start(); }
    // Compiles now instead of after the wait.
    void checkNow();
    bool pending() const { return m_delay.isActive(); }
    const TPLuaSyntaxResult &result() const { return m_result; }

signals:
    void checked();

private:
    void onResult(quint64 generation, const TPLuaSyntaxResult &result);

    QString m_chunkName;
    std::function<QString()> m_text;
    QTimer m_delay;
    quint64 m_generation = 0;
    TPLuaSyntaxResult m_result;
};
