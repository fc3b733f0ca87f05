#pragma once

#include "editing/tpscripttext.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <memory>
#include <utility>

// One name the editor may offer while a name is typed.
struct TPCompletionCandidate
{
    // Where a candidate comes from, in the order they rank.
    enum class Source { InScope, File, Tree, Library };

    QString name;
    // A function's parameters as a hint ("string.format(formatstring, ...)"); empty otherwise.
    QString hint;
    Source source = Source::Library;
    // How often the file (or, for the tree's names, the tree) uses it.
    int uses = 0;
    // The typed letters begin it; otherwise they only appear in it in order.
    bool prefixMatch = false;
    // A keyword that brings its whole block (if, for, while, function, repeat).
    bool block = false;

    friend bool operator==(const TPCompletionCandidate &, const TPCompletionCandidate &) = default;
};

// What the cursor is typing: a name's first letters, after "object." or "object:" when a
// member is typed. `start` is where the typed letters begin.
struct TPCompletionContext
{
    QString prefix;
    qsizetype start = 0;
    QString object;
    // The cursor is in a comment or a string, or not after a name: nothing to offer.
    bool active = false;
};

// Completion for Lua: Lua 5.4's keywords and standard library with their parameters as the
// reference manual gives them, the names of the file (locals in scope at the cursor,
// functions, parameters, fields seen after "name." or "name:"), and the names of the whole
// script tree. Pure rules: no view, no engine.
class TPLuaCompletion
{
public:
    // What the script tree offers: the globals its scripts define, and those they use that
    // none defines (the engine's own functions), each with how many times the tree uses it.
    struct TreeNames
    {
        QList<std::pair<QString, int>> defined;
        QList<std::pair<QString, int>> engine;
    };

    static TPCompletionContext contextAt(const QString &text, qsizetype cursor);

    // What a file says about names (locals in scope, functions, fields, uses) around the place
    // where a word is typed. It is read from the text outside the word, so it holds while the
    // word grows or shrinks: reading a long file once per word, not once per key.
    class FileNames;
    static std::shared_ptr<const FileNames> readFileNames(const QString &text, qsizetype start,
                                                          qsizetype cursor);
    // `names` was read from this very text outside the word from `start` to `cursor`.
    static bool holds(const FileNames &names, const QString &text, qsizetype start,
                      qsizetype cursor);

    // The candidates for what is typed at `cursor`, best first, at most `limit`: a prefix
    // match before one whose letters are only in order; then names in scope, the file's, the
    // tree's, the library's; then the most used; then by name.
    static QList<TPCompletionCandidate> candidates(const QString &text, qsizetype cursor,
                                                   const TreeNames &tree, int limit);
    // The same, for `context`, with the file's names already read.
    static QList<TPCompletionCandidate> candidates(const TPCompletionContext &context,
                                                   const FileNames &file, const TreeNames &tree,
                                                   int limit);

    // Accepting `candidate` for the typed letters of `context`: the edit that replaces them
    // (a block brings its lines, with its closing word at the line's indent) and where the
    // cursor goes after it. `indentUnit` is one indent step, `newline` the file's line ending.
    struct Insertion
    {
        TPTextEdit edit;
        qsizetype cursor = 0;
    };
    static Insertion insertion(const QString &text, const TPCompletionContext &context,
                               const TPCompletionCandidate &candidate, const QString &indentUnit,
                               const QString &newline);

    // Lua 5.4's keywords.
    static const QStringList &keywords();
};
