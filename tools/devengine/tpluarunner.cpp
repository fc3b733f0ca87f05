#include "tpluarunner.h"

#include <QStringList>

#include <lua.hpp>

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>

namespace {

constexpr auto kRunKey = "tp-devengine-run";
constexpr auto kStoppedMessage = "stopped";
// How often, in Lua instructions, a run checks whether it was asked to stop.
constexpr int kStopCheckInterval = 1000;

} // namespace

struct TPLuaRunner::Run
{
    QString name;
    std::atomic<bool> stopRequested = false;
    std::atomic<bool> ended = false;
    bool stopped = false; // written by the run's thread, read after joining it
    std::thread thread;
    // Where printed lines and the outcome go; reached from the run's thread.
    std::function<void(const QString &)> print;
};

namespace {

TPLuaRunner::Run *currentRun(lua_State *state)
{
    lua_getfield(state, LUA_REGISTRYINDEX, kRunKey);
    auto *run = static_cast<TPLuaRunner::Run *>(lua_touserdata(state, -1));
    lua_pop(state, 1);
    return run;
}

void stopHook(lua_State *state, lua_Debug *)
{
    if (currentRun(state)->stopRequested)
        luaL_error(state, kStoppedMessage);
}

QString joinedArguments(lua_State *state)
{
    QStringList parts;
    const int count = lua_gettop(state);
    for (int i = 1; i <= count; ++i)
        parts.append(QString::fromUtf8(luaL_tolstring(state, i, nullptr)));
    return parts.join(u'\t');
}

int luaPrint(lua_State *state)
{
    const QString line = joinedArguments(state);
    currentRun(state)->print(line);
    return 0;
}

// The stand-in for the phone's touch: it only reports where the tap would be.
int luaTap(lua_State *state)
{
    const lua_Integer x = luaL_checkinteger(state, 1);
    const lua_Integer y = luaL_checkinteger(state, 2);
    currentRun(state)->print(QStringLiteral("tap %1 %2").arg(x).arg(y));
    return 0;
}

// Sleeps in short steps so that a stop request ends the sleep at once.
int luaSleep(lua_State *state)
{
    const lua_Integer milliseconds = luaL_checkinteger(state, 1);
    const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    TPLuaRunner::Run *run = currentRun(state);
    while (std::chrono::steady_clock::now() < until) {
        if (run->stopRequested)
            return luaL_error(state, kStoppedMessage);
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return 0;
}

void installEngineFunctions(lua_State *state)
{
    luaL_openlibs(state);
    // A script must not be able to end the engine itself.
    lua_getglobal(state, "os");
    lua_pushnil(state);
    lua_setfield(state, -2, "exit");
    lua_pop(state, 1);
    lua_register(state, "print", luaPrint);
    lua_register(state, "tap", luaTap);
    lua_register(state, "sleep", luaSleep);
}

QString runScript(TPLuaRunner::Run *run, const QByteArray &source)
{
    lua_State *state = luaL_newstate();
    if (!state)
        return QStringLiteral("error: out of memory");
    lua_pushlightuserdata(state, run);
    lua_setfield(state, LUA_REGISTRYINDEX, kRunKey);
    installEngineFunctions(state);
    lua_sethook(state, stopHook, LUA_MASKCOUNT, kStopCheckInterval);

    const QByteArray chunkName = "@" + run->name.toUtf8();
    int status =
        luaL_loadbuffer(state, source.constData(), size_t(source.size()), chunkName.constData());
    if (status == LUA_OK)
        status = lua_pcall(state, 0, 0, 0);
    QString outcome = QStringLiteral("finished");
    if (status != LUA_OK) {
        outcome = run->stopRequested
                      ? QStringLiteral("stopped")
                      : QStringLiteral("error: ") + QString::fromUtf8(lua_tostring(state, -1));
    }
    lua_close(state);
    return outcome;
}

} // namespace

TPLuaRunner::TPLuaRunner(QObject *parent) : QObject(parent) {}

TPLuaRunner::~TPLuaRunner()
{
    stopAll();
}

std::optional<QString> TPLuaRunner::compileError(const QByteArray &source, const QString &name)
{
    lua_State *state = luaL_newstate();
    if (!state)
        return QStringLiteral("out of memory");
    const QByteArray chunkName = "@" + name.toUtf8();
    std::optional<QString> error;
    if (luaL_loadbuffer(state, source.constData(), size_t(source.size()), chunkName.constData()) !=
        LUA_OK)
        error = QString::fromUtf8(lua_tostring(state, -1));
    lua_close(state);
    return error;
}

void TPLuaRunner::start(const QString &name, const QByteArray &source)
{
    stop(name);
    auto run = std::make_shared<Run>();
    run->name = name;
    run->print = [this, name](const QString &line) { emit output(name, line); };
    Run *raw = run.get();
    run->thread = std::thread([this, raw, source] {
        const QString outcome = runScript(raw, source);
        raw->stopped = raw->stopRequested && outcome == QLatin1String(kStoppedMessage);
        raw->ended = true;
        // A stopped run is reported by stop(), on the runner's thread, once it has ended:
        // at the engine's exit no event loop is left to deliver a report from here.
        if (!raw->stopped)
            emit finished(raw->name, outcome);
    });
    m_runs.insert(name, run);
}

void TPLuaRunner::stop(const QString &name)
{
    const std::shared_ptr<Run> run = m_runs.take(name);
    if (!run)
        return;
    run->stopRequested = true;
    run->thread.join();
    if (run->stopped)
        emit finished(name, QString::fromLatin1(kStoppedMessage));
}

void TPLuaRunner::stopAll()
{
    const QStringList names = m_runs.keys();
    for (const QString &name : names)
        stop(name);
}

int TPLuaRunner::activeRuns() const
{
    int count = 0;
    for (const auto &run : m_runs) {
        if (!run->ended)
            ++count;
    }
    return count;
}
