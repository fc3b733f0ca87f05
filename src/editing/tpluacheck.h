#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <memory>

struct lua_State;

// One of luacheck's warnings about a script.
struct TPLintWarning
{
    // luacheck's code: "211" an unused local, "113" an undefined global, "4xx" a shadowing.
    QString code;
    int line = 0;
    // The 1-based columns the warning covers, in bytes of the line's UTF-8 as luacheck counts.
    int column = 0;
    int endColumn = 0;
    // The name the warning is about, if any.
    QString name;
    // luacheck's own message.
    QString message;
    // For an unknown global, the known name closest to it, if one is close enough to be what
    // was meant.
    QString suggestion;

    friend bool operator==(const TPLintWarning &, const TPLintWarning &) = default;
};

struct TPLintResult
{
    enum class Status {
        // Not asked for, or the script does not compile: there is nothing to say.
        NotRun,
        Linted,
        // Over MaxLines: not linted.
        TooLong,
        // luacheck ran past MaxMs and was stopped.
        TooSlow,
        // luacheck could not run (its modules are missing, or it failed on this text).
        Failed,
    };
    Status status = Status::NotRun;
    QList<TPLintWarning> warnings;
};

// The globals a script defines (sets at its top level or in a function) and those it reads
// or calls, with how many times, as luacheck's scope analysis finds them; locals and fields
// are not globals. Lua's standard globals are left out.
struct TPLuaGlobals
{
    QStringList defined;
    QList<std::pair<QString, int>> used;
};

// luacheck, the Lua linter, run inside the app on the Lua 5.4 library the syntax check uses.
// Its modules are pure Lua and come from the app's resources (":/luacheck"), where the build
// puts Debian's lua-check. The script is parsed and analysed, never run. A checker keeps one
// Lua state with luacheck loaded; use it on one thread at a time.
class TPLuaCheck
{
public:
    static constexpr int MaxLines = 20000;
    static constexpr int MaxMs = 2000;
    // How far (in edits) an unknown global may be from a known name to be suggested.
    static constexpr int MaxSuggestionDistance = 2;

    TPLuaCheck();
    ~TPLuaCheck();
    TPLuaCheck(const TPLuaCheck &) = delete;
    TPLuaCheck &operator=(const TPLuaCheck &) = delete;

    // Lints `source`; Lua 5.4's standard globals and `knownGlobals` are defined, and an
    // undefined global near one of those names is given it as its suggestion.
    TPLintResult check(const QString &source, const QStringList &knownGlobals, int maxMs = MaxMs);

    // The globals `source` defines and uses; none when it does not parse.
    TPLuaGlobals globals(const QString &source);

    // Lua 5.4's standard globals, as luacheck knows them.
    QStringList standardGlobals();

    // The name of `known` closest to `name` by edit distance, if within the distance allowed
    // (and closer than the name's own length); the empty text otherwise.
    static QString closestName(const QString &name, const QStringList &known);

private:
    bool ensureLoaded();

    std::unique_ptr<lua_State, void (*)(lua_State *)> m_state;
    bool m_loaded = false;
    // The driver's check and globals functions, in the registry.
    int m_checkRef = 0;
    int m_globalsRef = 0;
    QStringList m_standardGlobals;
};
