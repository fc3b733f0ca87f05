#pragma once

#include "editing/tpluacheck.h"
#include "editing/tpluasyntaxcheck.h"

#include <QObject>
#include <QTimer>

#include <functional>

// Checks a script's syntax once typing pauses: each change restarts a 0.6 s wait, and when
// it ends the text of that moment is compiled on a worker thread and, when it compiles,
// linted there with luacheck. Only the newest check's result is kept; an older one that
// comes back late says nothing about the text now.
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
    // luacheck's warnings about the text checked; not run while it does not compile.
    const TPLintResult &lint() const { return m_lint; }
    // Globals the lint knows besides Lua's own (those the script tree defines or shares),
    // from the next check on.
    void setKnownGlobals(const QStringList &globals) { m_knownGlobals = globals; }
    // The lint may take this long before it is stopped (tests shorten it).
    void setLintTimeLimitMs(int ms) { m_lintTimeLimitMs = ms; }

signals:
    void checked();

private:
    void onResult(quint64 generation, const TPLuaSyntaxResult &result, const TPLintResult &lint);

    QString m_chunkName;
    std::function<QString()> m_text;
    QTimer m_delay;
    quint64 m_generation = 0;
    TPLuaSyntaxResult m_result;
    TPLintResult m_lint;
    QStringList m_knownGlobals;
    int m_lintTimeLimitMs = TPLuaCheck::MaxMs;
};
