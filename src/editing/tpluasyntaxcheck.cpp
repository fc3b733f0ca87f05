#include "editing/tpluasyntaxcheck.h"

#include <QRegularExpression>

#include <lua.hpp>

#include <memory>

TPLuaSyntaxResult TPCheckLuaSyntax(const QString &chunkName, const QString &source)
{
    const std::unique_ptr<lua_State, decltype(&lua_close)> state(luaL_newstate(), &lua_close);
    if (!state)
        return {};
    QByteArray bytes = source.toUtf8();
    // As Lua's own file loader does: a byte-order mark is skipped and a first line starting
    // with "#" is ignored (its line break stays, so line numbers stay right).
    if (bytes.startsWith("\xEF\xBB\xBF"))
        bytes.remove(0, 3);
    if (bytes.startsWith('#')) {
        const qsizetype lineEnd = bytes.indexOf('\n');
        bytes.remove(0, lineEnd < 0 ? bytes.size() : lineEnd);
    }
    // "=" makes the name appear as given; mode "t" refuses precompiled chunks.
    const QByteArray name = "=" + chunkName.toUtf8();
    if (luaL_loadbufferx(state.get(), bytes.constData(), size_t(bytes.size()), name.constData(),
                         "t") == LUA_OK)
        return {};
    size_t length = 0;
    const char *text = lua_tolstring(state.get(), -1, &length);
    TPLuaSyntaxResult result;
    result.message = QString::fromUtf8(text, qsizetype(length));
    // The message reads "NAME:LINE: what went wrong".
    const QRegularExpression where(u'^' + QRegularExpression::escape(chunkName) +
                                   QStringLiteral(":(\\d+):"));
    const QRegularExpressionMatch match = where.match(result.message);
    result.line = match.hasMatch() ? std::max(match.captured(1).toInt(), 1) : 1;
    return result;
}
