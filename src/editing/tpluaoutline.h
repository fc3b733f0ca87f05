#pragma once

#include "editing/tpscripttext.h"

#include <QList>
#include <QString>

// The functions a Lua script declares, in the order they appear: "function a.b:c(...)",
// "local function f" and "name = function(...)" (a local or a field too). They are read
// from the tokens the colouring scans, so a function written inside a string or a comment
// is no function.
namespace TPLuaOutline {

struct Entry
{
    // As written: "a.b:c", "f", "M.name".
    QString name;
    // 1-based.
    int line = 0;

    bool operator==(const Entry &other) const = default;
};

QList<Entry> functions(const TPScriptText &text);

} // namespace TPLuaOutline
