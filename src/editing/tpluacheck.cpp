#include "editing/tpluacheck.h"

#include <QElapsedTimer>
#include <QFile>
#include <QSet>

#include <lua.hpp>

#include <algorithm>
#include <vector>

namespace {

// Where the build puts luacheck's modules: "luacheck" is init.lua, "luacheck.stages.parse" is
// stages/parse.lua.
constexpr auto kModuleRoot = ":/luacheck";

// A searcher for `require`, put before Lua's own: luacheck's modules come from the resources
// and from nowhere else.
int searchResources(lua_State *state)
{
    const QString module = QString::fromUtf8(luaL_checkstring(state, 1));
    const QLatin1String prefix("luacheck");
    if (module != prefix && !module.startsWith(prefix + u'.')) {
        lua_pushstring(state, "\n\tnot one of luacheck's modules");
        return 1;
    }
    const QString path = QLatin1String(kModuleRoot) + module.mid(prefix.size()).replace(u'.', u'/');
    for (const QString &candidate :
         {path + QStringLiteral(".lua"), path + QStringLiteral("/init.lua")}) {
        QFile file(candidate);
        if (!file.open(QIODevice::ReadOnly))
            continue;
        const QByteArray source = file.readAll();
        const QByteArray chunkName = '=' + candidate.toUtf8();
        if (luaL_loadbufferx(state, source.constData(), size_t(source.size()),
                             chunkName.constData(), "t") != LUA_OK)
            return lua_error(state);
        lua_pushstring(state, candidate.toUtf8().constData());
        return 2;
    }
    lua_pushfstring(state, "\n\tno resource %s.lua", path.toUtf8().constData());
    return 1;
}

// The run's time limit, reached through the state's extra space.
struct Deadline
{
    QElapsedTimer clock;
    qint64 limitMs = 0;
};

Deadline *&deadlineOf(lua_State *state)
{
    return *static_cast<Deadline **>(lua_getextraspace(state));
}

void stopWhenLate(lua_State *state, lua_Debug *)
{
    if (const Deadline *deadline = deadlineOf(state);
        deadline && deadline->clock.elapsed() > deadline->limitMs)
        luaL_error(state, "the lint ran out of time");
}

// Runs luacheck on a text with known globals and hands back its warnings as plain rows. A
// script may define globals for the others (allow_defined), so setting one, and leaving one
// unused, is no warning (111, 112, 131); nor is formatting (6xx: whitespace, line length),
// which says nothing about what a script does. Also gives the standard globals.
constexpr auto kDriver = R"lua(
local luacheck = require("luacheck")
local standards = require("luacheck.builtin_standards")
local function check(source, globals)
  local report = luacheck.check_strings({source}, {std = "lua54", globals = globals,
                                                   allow_defined = true,
                                                   max_line_length = false})
  local file = report[1]
  if file.fatal then
    error(file.msg or file.fatal)
  end
  local rows = {}
  for _, warning in ipairs(file) do
    local code = warning.code
    if code:sub(1, 1) ~= "6" and code ~= "111" and code ~= "112" and code ~= "131" then
      rows[#rows + 1] = {code, warning.line, warning.column, warning.end_column,
                         warning.name or "", luacheck.get_message(warning)}
    end
  end
  return rows
end
local function globals(source)
  local report = luacheck.check_strings({source}, {std = "none", allow_defined = false,
                                                   max_line_length = false})
  local file = report[1]
  if file.fatal then
    error(file.msg or file.fatal)
  end
  local defined, used = {}, {}
  for _, warning in ipairs(file) do
    local name = warning.name
    if warning.code == "111" then
      defined[name] = true
    elseif warning.code == "112" or warning.code == "113" then
      used[name] = (used[name] or 0) + 1
    end
  end
  local definedList, usedList = {}, {}
  for name in pairs(defined) do
    definedList[#definedList + 1] = name
  end
  for name, count in pairs(used) do
    usedList[#usedList + 1] = {name, count}
  end
  return definedList, usedList
end
local function standardGlobals()
  local names = {}
  for name in pairs(standards.lua54.read_globals) do
    names[#names + 1] = name
  end
  return names
end
return check, globals, standardGlobals
)lua";

QString textAt(lua_State *state, int index)
{
    size_t length = 0;
    const char *text = lua_tolstring(state, index, &length);
    return text ? QString::fromUtf8(text, qsizetype(length)) : QString();
}

int intField(lua_State *state, int table, int key)
{
    lua_rawgeti(state, table, key);
    const int value = int(lua_tointeger(state, -1));
    lua_pop(state, 1);
    return value;
}

QString textField(lua_State *state, int table, int key)
{
    lua_rawgeti(state, table, key);
    QString value = textAt(state, -1);
    lua_pop(state, 1);
    return value;
}

void pushNames(lua_State *state, const QStringList &names)
{
    lua_createtable(state, int(names.size()), 0);
    for (qsizetype i = 0; i < names.size(); ++i) {
        lua_pushstring(state, names.at(i).toUtf8().constData());
        lua_rawseti(state, -2, lua_Integer(i + 1));
    }
}

int editDistance(const QString &a, const QString &b)
{
    std::vector<int> previous(size_t(b.size()) + 1);
    std::vector<int> current(previous.size());
    for (size_t j = 0; j < previous.size(); ++j)
        previous[j] = int(j);
    for (qsizetype i = 1; i <= a.size(); ++i) {
        current[0] = int(i);
        for (qsizetype j = 1; j <= b.size(); ++j) {
            const int substitution = previous[size_t(j - 1)] + (a.at(i - 1) == b.at(j - 1) ? 0 : 1);
            current[size_t(j)] =
                std::min({previous[size_t(j)] + 1, current[size_t(j - 1)] + 1, substitution});
        }
        std::swap(previous, current);
    }
    return previous.back();
}

} // namespace

TPLuaCheck::TPLuaCheck() : m_state(luaL_newstate(), &lua_close) {}

TPLuaCheck::~TPLuaCheck() = default;

bool TPLuaCheck::ensureLoaded()
{
    if (m_loaded || !m_state)
        return m_loaded;
    lua_State *state = m_state.get();
    luaL_openlibs(state);
    deadlineOf(state) = nullptr;
    // Lua's own searchers stay out: nothing is read from the file system.
    lua_getglobal(state, "package");
    lua_createtable(state, 2, 0);
    lua_getfield(state, -2, "searchers");
    lua_rawgeti(state, -1, 1); // the preload searcher
    lua_rawseti(state, -3, 1);
    lua_pop(state, 1);
    lua_pushcfunction(state, &searchResources);
    lua_rawseti(state, -2, 2);
    lua_setfield(state, -2, "searchers");
    lua_pop(state, 1);
    if (luaL_loadbufferx(state, kDriver, qstrlen(kDriver), "=tpluacheck", "t") != LUA_OK ||
        lua_pcall(state, 0, 3, 0) != LUA_OK || lua_pcall(state, 0, 1, 0) != LUA_OK) {
        lua_settop(state, 0);
        return false;
    }
    // The standard globals, once; then the check function is kept.
    m_standardGlobals.clear();
    for (lua_Integer i = 1, count = lua_Integer(lua_rawlen(state, -1)); i <= count; ++i)
        m_standardGlobals.append(textField(state, -1, int(i)));
    m_standardGlobals.sort();
    lua_pop(state, 1);
    m_globalsRef = luaL_ref(state, LUA_REGISTRYINDEX);
    m_checkRef = luaL_ref(state, LUA_REGISTRYINDEX);
    m_loaded = true;
    return true;
}

QStringList TPLuaCheck::standardGlobals()
{
    ensureLoaded();
    return m_standardGlobals;
}

TPLintResult TPLuaCheck::check(const QString &source, const QStringList &knownGlobals, int maxMs)
{
    TPLintResult result;
    if (source.count(u'\n') >= MaxLines) {
        result.status = TPLintResult::Status::TooLong;
        return result;
    }
    if (!ensureLoaded()) {
        result.status = TPLintResult::Status::Failed;
        return result;
    }
    lua_State *state = m_state.get();
    lua_rawgeti(state, LUA_REGISTRYINDEX, m_checkRef);
    const QByteArray bytes = source.toUtf8();
    lua_pushlstring(state, bytes.constData(), size_t(bytes.size()));
    pushNames(state, knownGlobals);
    Deadline deadline;
    deadline.limitMs = maxMs;
    deadline.clock.start();
    deadlineOf(state) = &deadline;
    lua_sethook(state, &stopWhenLate, LUA_MASKCOUNT, 10000);
    const int status = lua_pcall(state, 2, 1, 0);
    lua_sethook(state, nullptr, 0, 0);
    deadlineOf(state) = nullptr;
    if (status != LUA_OK) {
        result.status = deadline.clock.elapsed() > maxMs ? TPLintResult::Status::TooSlow
                                                         : TPLintResult::Status::Failed;
        lua_settop(state, 0);
        // A run stopped midway may leave luacheck's modules half way through their work: a
        // fresh state for the next one.
        m_state.reset(luaL_newstate());
        m_loaded = false;
        return result;
    }
    const QStringList known = knownGlobals + m_standardGlobals;
    for (lua_Integer i = 1, count = lua_Integer(lua_rawlen(state, -1)); i <= count; ++i) {
        lua_rawgeti(state, -1, i);
        const int row = lua_gettop(state);
        TPLintWarning warning{textField(state, row, 1),
                              intField(state, row, 2),
                              intField(state, row, 3),
                              intField(state, row, 4),
                              textField(state, row, 5),
                              textField(state, row, 6),
                              QString()};
        lua_pop(state, 1);
        if (warning.code == QLatin1String("113"))
            warning.suggestion = closestName(warning.name, known);
        result.warnings.append(warning);
    }
    lua_settop(state, 0);
    result.status = TPLintResult::Status::Linted;
    return result;
}

TPLuaGlobals TPLuaCheck::globals(const QString &source)
{
    TPLuaGlobals found;
    if (source.count(u'\n') >= MaxLines || !ensureLoaded())
        return found;
    lua_State *state = m_state.get();
    lua_rawgeti(state, LUA_REGISTRYINDEX, m_globalsRef);
    const QByteArray bytes = source.toUtf8();
    lua_pushlstring(state, bytes.constData(), size_t(bytes.size()));
    if (lua_pcall(state, 1, 2, 0) != LUA_OK) {
        lua_settop(state, 0);
        return found;
    }
    const QSet<QString> standard(m_standardGlobals.cbegin(), m_standardGlobals.cend());
    for (lua_Integer i = 1, count = lua_Integer(lua_rawlen(state, 1)); i <= count; ++i) {
        if (QString name = textField(state, 1, int(i)); !standard.contains(name))
            found.defined.append(name);
    }
    for (lua_Integer i = 1, count = lua_Integer(lua_rawlen(state, 2)); i <= count; ++i) {
        lua_rawgeti(state, 2, i);
        if (QString name = textField(state, -1, 1); !standard.contains(name))
            found.used.append({name, intField(state, -1, 2)});
        lua_pop(state, 1);
    }
    lua_settop(state, 0);
    found.defined.sort();
    std::sort(found.used.begin(), found.used.end());
    return found;
}

QString TPLuaCheck::closestName(const QString &name, const QStringList &known)
{
    QString best;
    int bestDistance = MaxSuggestionDistance + 1;
    for (const QString &candidate : known) {
        if (candidate == name || qAbs(candidate.size() - name.size()) >= bestDistance)
            continue;
        const int distance = editDistance(name, candidate);
        if (distance < bestDistance && distance < name.size()) {
            best = candidate;
            bestDistance = distance;
        }
    }
    return best;
}
