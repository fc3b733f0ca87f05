#pragma once

#include <QString>

// The Lua 5.4 compiler's verdict on a script, which is compiled and never run.
struct TPLuaSyntaxResult
{
    // The 1-based line of the first error, 0 when the script compiles.
    int line = 0;
    // The compiler's own message, for example "main.lua:3: 'end' expected near <eof>".
    QString message;

    bool ok() const { return line == 0 && message.isEmpty(); }
};

// Compiles `source` as a Lua 5.4 text chunk named `chunkName` (the file name, which starts
// the compiler's messages). Safe on any thread: each call has a Lua state of its own.
TPLuaSyntaxResult TPCheckLuaSyntax(const QString &chunkName, const QString &source);
