#include "editing/tpluacompletion.h"

#include <QHash>
#include <QSet>

#include <algorithm>
#include <tuple>
#include <vector>

namespace {

// Lua 5.4's standard library as the reference manual gives it: each name with its
// parameters (none for a value).
struct LibraryEntry
{
    const char *name;
    const char *parameters;
};

constexpr LibraryEntry kGlobals[] = {
    {"assert", "v [, message]"},
    {"collectgarbage", "[opt [, arg]]"},
    {"dofile", "[filename]"},
    {"error", "message [, level]"},
    {"getmetatable", "object"},
    {"ipairs", "t"},
    {"load", "chunk [, chunkname [, mode [, env]]]"},
    {"loadfile", "[filename [, mode [, env]]]"},
    {"next", "table [, index]"},
    {"pairs", "t"},
    {"pcall", "f [, arg1, ...]"},
    {"print", "..."},
    {"rawequal", "v1, v2"},
    {"rawget", "table, index"},
    {"rawlen", "v"},
    {"rawset", "table, index, value"},
    {"require", "modname"},
    {"select", "index, ..."},
    {"setmetatable", "table, metatable"},
    {"tonumber", "e [, base]"},
    {"tostring", "v"},
    {"type", "v"},
    {"xpcall", "f, msgh [, arg1, ...]"},
    {"_G", nullptr},
    {"_VERSION", nullptr},
    {"string", nullptr},
    {"table", nullptr},
    {"math", nullptr},
    {"os", nullptr},
    {"io", nullptr},
    {"coroutine", nullptr},
    {"utf8", nullptr},
};

constexpr LibraryEntry kString[] = {
    {"byte", "s [, i [, j]]"},
    {"char", "..."},
    {"dump", "function [, strip]"},
    {"find", "s, pattern [, init [, plain]]"},
    {"format", "formatstring, ..."},
    {"gmatch", "s, pattern [, init]"},
    {"gsub", "s, pattern, repl [, n]"},
    {"len", "s"},
    {"lower", "s"},
    {"match", "s, pattern [, init]"},
    {"pack", "fmt, v1, v2, ..."},
    {"packsize", "fmt"},
    {"rep", "s, n [, sep]"},
    {"reverse", "s"},
    {"sub", "s, i [, j]"},
    {"unpack", "fmt, s [, pos]"},
    {"upper", "s"},
};

constexpr LibraryEntry kTable[] = {
    {"concat", "list [, sep [, i [, j]]]"},
    {"insert", "list, [pos,] value"},
    {"move", "a1, f, e, t [, a2]"},
    {"pack", "..."},
    {"remove", "list [, pos]"},
    {"sort", "list [, comp]"},
    {"unpack", "list [, i [, j]]"},
};

constexpr LibraryEntry kMath[] = {
    {"abs", "x"},
    {"acos", "x"},
    {"asin", "x"},
    {"atan", "y [, x]"},
    {"ceil", "x"},
    {"cos", "x"},
    {"deg", "x"},
    {"exp", "x"},
    {"floor", "x"},
    {"fmod", "x, y"},
    {"huge", nullptr},
    {"log", "x [, base]"},
    {"max", "x, ..."},
    {"maxinteger", nullptr},
    {"min", "x, ..."},
    {"mininteger", nullptr},
    {"modf", "x"},
    {"pi", nullptr},
    {"rad", "x"},
    {"random", "[m [, n]]"},
    {"randomseed", "[x [, y]]"},
    {"sin", "x"},
    {"sqrt", "x"},
    {"tan", "x"},
    {"tointeger", "x"},
    {"type", "x"},
    {"ult", "m, n"},
};

constexpr LibraryEntry kOs[] = {
    {"clock", ""},
    {"date", "[format [, time]]"},
    {"difftime", "t2, t1"},
    {"execute", "[command]"},
    {"exit", "[code [, close]]"},
    {"getenv", "varname"},
    {"remove", "filename"},
    {"rename", "oldname, newname"},
    {"setlocale", "locale [, category]"},
    {"time", "[table]"},
    {"tmpname", ""},
};

constexpr LibraryEntry kIo[] = {
    {"close", "[file]"},
    {"flush", ""},
    {"input", "[file]"},
    {"lines", "[filename, ...]"},
    {"open", "filename [, mode]"},
    {"output", "[file]"},
    {"popen", "prog [, mode]"},
    {"read", "..."},
    {"tmpfile", ""},
    {"type", "obj"},
    {"write", "..."},
    {"stdin", nullptr},
    {"stdout", nullptr},
    {"stderr", nullptr},
};

constexpr LibraryEntry kCoroutine[] = {
    {"close", "co"}, {"create", "f"},  {"isyieldable", ""}, {"resume", "co [, val1, ...]"},
    {"running", ""}, {"status", "co"}, {"wrap", "f"},       {"yield", "..."},
};

constexpr LibraryEntry kUtf8[] = {
    {"char", "..."},
    {"charpattern", nullptr},
    {"codes", "s [, lax]"},
    {"codepoint", "s [, i [, j [, lax]]]"},
    {"len", "s [, i [, j [, lax]]]"},
    {"offset", "s, n [, i]"},
};

struct Library
{
    const char *name;
    const LibraryEntry *begin;
    const LibraryEntry *end;
};

template <size_t N>
constexpr Library library(const char *name, const LibraryEntry (&entries)[N])
{
    return {name, entries, entries + N};
}

constexpr Library kLibraries[] = {
    library("string", kString), library("table", kTable), library("math", kMath),
    library("os", kOs),         library("io", kIo),       library("coroutine", kCoroutine),
    library("utf8", kUtf8),
};

// The keywords that bring their block.
const QSet<QString> kBlockKeywords = {"if", "for", "while", "function", "repeat"};

bool isNameStart(QChar c)
{
    return c == u'_' || (c.unicode() < 128 && c.isLetter());
}

bool isNamePart(QChar c)
{
    return isNameStart(c) || (c >= u'0' && c <= u'9');
}

// The script read as Lua tokens as far as completion needs them: names, with their
// position, and the punctuation between them; strings, comments and numbers are skipped.
struct Token
{
    enum Kind { Name, Punct, End };
    Kind kind = End;
    qsizetype start = 0;
    QStringView text;
};

class Lexer
{
public:
    Lexer(const QString &text, qsizetype end) : m_text(text), m_end(end) {}

    // The next token before `end`; where the cursor is in a comment or a string, `inside`
    // says so once the lexer reaches it.
    Token next()
    {
        while (m_at < m_end) {
            const QChar c = m_text.at(m_at);
            if (c.isSpace()) {
                ++m_at;
            } else if (c == u'-' && peek(1) == u'-') {
                skipComment();
            } else if (c == u'"' || c == u'\'') {
                skipQuoted(c);
            } else if (c == u'[' && longBracketLevel(m_at) >= 0) {
                skipLong(longBracketLevel(m_at));
            } else if (c.isDigit()) {
                while (m_at < m_end && (isNamePart(m_text.at(m_at)) || m_text.at(m_at) == u'.'))
                    ++m_at;
            } else if (isNameStart(c)) {
                const qsizetype start = m_at;
                while (m_at < m_end && isNamePart(m_text.at(m_at)))
                    ++m_at;
                return {Token::Name, start, QStringView(m_text).mid(start, m_at - start)};
            } else {
                const qsizetype start = m_at++;
                return {Token::Punct, start, QStringView(m_text).mid(start, 1)};
            }
        }
        return {Token::End, m_end, {}};
    }

    // The text ran out inside a comment or a string.
    bool endedInside() const { return m_endedInside; }

private:
    QChar peek(qsizetype ahead) const
    {
        return m_at + ahead < m_end ? m_text.at(m_at + ahead) : QChar();
    }

    // "[[", "[=[", ...: the number of "=", or -1 when no long bracket starts at `at`.
    qsizetype longBracketLevel(qsizetype at) const
    {
        qsizetype level = 0;
        for (++at; at < m_end && m_text.at(at) == u'='; ++at)
            ++level;
        return at < m_end && m_text.at(at) == u'[' ? level : -1;
    }

    void skipLong(qsizetype level)
    {
        const QString close = u']' + QString(level, u'=') + u']';
        const qsizetype found = m_text.indexOf(close, m_at + level + 2);
        if (found < 0 || found + close.size() > m_end) {
            m_at = m_end;
            m_endedInside = true;
        } else {
            m_at = found + close.size();
        }
    }

    void skipComment()
    {
        m_at += 2;
        if (m_at < m_end && m_text.at(m_at) == u'[' && longBracketLevel(m_at) >= 0) {
            skipLong(longBracketLevel(m_at));
            return;
        }
        while (m_at < m_end && m_text.at(m_at) != u'\n' && m_text.at(m_at) != u'\r')
            ++m_at;
        if (m_at >= m_end)
            m_endedInside = true;
    }

    void skipQuoted(QChar quote)
    {
        for (++m_at; m_at < m_end; ++m_at) {
            const QChar c = m_text.at(m_at);
            if (c == u'\\') {
                ++m_at;
            } else if (c == quote) {
                ++m_at;
                return;
            } else if (c == u'\n' || c == u'\r') {
                return;
            }
        }
        m_endedInside = true;
    }

    const QString &m_text;
    const qsizetype m_end;
    qsizetype m_at = 0;
    bool m_endedInside = false;
};

} // namespace

// What the file tells about names: the locals in scope at the cursor, the functions it
// declares, the fields seen after each "name." or "name:", and how often each name occurs.
// The names are views into `text` (the file without the typed word), which they live with:
// a long file is read without making a string of every name in it.
class TPLuaCompletion::FileNames
{
public:
    QString text;
    // Where the typed word was taken out, and how much of the file follows it.
    qsizetype start = 0;
    qsizetype tail = 0;
    QList<QStringView> inScope;
    QSet<QStringView> functions;
    QHash<QStringView, QSet<QStringView>> fields;
    QHash<QStringView, int> uses;
};

namespace {

// Reads `names.text` with the cursor at `cursor`; a name that starts at the cursor (the rest
// of a word the cursor is in) is no name of the file.
void readFile(TPLuaCompletion::FileNames &names, qsizetype cursor)
{
    const QString &text = names.text;
    const qsizetype prefixStart = cursor;
    // Scopes open at the cursor, innermost last, each with its locals.
    std::vector<QList<QStringView>> scopes(1);
    // Names that join the scope the next block opens: a function's parameters, a loop's
    // variables.
    QList<QStringView> pending;
    // What the names read next are: locals of "local a, b", a loop's variables, a
    // function's parameters, or the name of "local function".
    enum class Collecting { Nothing, Locals, LoopVariables, Parameters, LocalFunction };
    Collecting collecting = Collecting::Nothing;
    bool inParameterList = false;
    bool pastCursor = false;
    Token previous;
    Token beforePrevious;
    const auto open = [&] { scopes.emplace_back(std::exchange(pending, {})); };
    const auto close = [&] {
        if (scopes.size() > 1)
            scopes.pop_back();
    };
    Lexer lexer(text, text.size());
    for (Token token = lexer.next(); token.kind != Token::End; token = lexer.next()) {
        // The scopes are what they are at the cursor; the rest of the file still tells its
        // functions, fields and uses.
        if (!pastCursor && token.start >= cursor) {
            pastCursor = true;
            for (const QList<QStringView> &scope : scopes)
                names.inScope += scope;
        }
        // The letters at the cursor are no name of the file, and count for nothing.
        if (token.start == prefixStart && token.kind == Token::Name)
            continue;
        // A list of locals ends where no comma follows its last name.
        if (collecting == Collecting::Locals && previous.kind == Token::Name &&
            previous.text != u"local" && token.text != u",")
            collecting = Collecting::Nothing;
        if (token.kind == Token::Name) {
            const QStringView word = token.text;
            const QStringView name = word;
            ++names.uses[name];
            const bool member = previous.kind == Token::Punct &&
                                (previous.text == u"." || previous.text == u":") &&
                                beforePrevious.kind == Token::Name;
            if (member)
                names.fields[beforePrevious.text].insert(name);
            if (word == u"function") {
                // "name = function": the name is a function's.
                if (previous.text == u"=" && beforePrevious.kind == Token::Name)
                    names.functions.insert(beforePrevious.text);
                collecting =
                    previous.text == u"local" ? Collecting::LocalFunction : Collecting::Parameters;
            } else if (word == u"local") {
                collecting = Collecting::Locals;
            } else if (word == u"for") {
                collecting = Collecting::LoopVariables;
            } else if (word == u"do" || word == u"then" || word == u"repeat") {
                collecting = Collecting::Nothing;
                open();
            } else if (word == u"else") {
                close();
                open();
            } else if (word == u"elseif" || word == u"end" || word == u"until") {
                close();
            } else if (word == u"in") {
                collecting = Collecting::Nothing;
            } else if (!pastCursor && !member) {
                switch (collecting) {
                case Collecting::Locals:
                    scopes.back().append(name);
                    break;
                case Collecting::LocalFunction:
                    scopes.back().append(name);
                    names.functions.insert(name);
                    collecting = Collecting::Parameters;
                    break;
                case Collecting::LoopVariables:
                    pending.append(name);
                    break;
                case Collecting::Parameters:
                    if (inParameterList)
                        pending.append(name);
                    break;
                case Collecting::Nothing:
                    break;
                }
            }
        } else {
            const QStringView punct = token.text;
            if (punct == u"=" && collecting != Collecting::Parameters)
                collecting = Collecting::Nothing;
            if (collecting == Collecting::Parameters || collecting == Collecting::LocalFunction) {
                if (punct == u"(") {
                    // The last name before "(" is the function's: "function a.b:c(".
                    if (previous.kind == Token::Name && previous.text != u"function")
                        names.functions.insert(previous.text);
                    inParameterList = true;
                } else if (punct == u":") {
                    pending.append(u"self");
                } else if (punct == u")") {
                    inParameterList = false;
                    collecting = Collecting::Nothing;
                    open();
                }
            }
        }
        beforePrevious = previous;
        previous = token;
    }
    if (!pastCursor) {
        for (const QList<QStringView> &scope : scopes)
            names.inScope += scope;
    }
}

// Whether `typed` starts `name`, or its letters appear in it in order; ignoring case.
std::optional<bool> matches(const QString &name, const QString &typed)
{
    if (typed.isEmpty() || name.startsWith(typed, Qt::CaseInsensitive))
        return true;
    qsizetype at = 0;
    for (const QChar c : typed) {
        at = name.indexOf(c, at, Qt::CaseInsensitive);
        if (at < 0)
            return std::nullopt;
        ++at;
    }
    return false;
}

QString hintFor(const QString &qualified, const char *parameters)
{
    return parameters ? qualified + u'(' + QLatin1String(parameters) + u')' : QString();
}

// The leading white space of the line `offset` is on.
QString indentOfLine(const QString &text, qsizetype offset)
{
    qsizetype start = offset;
    while (start > 0 && text.at(start - 1) != u'\n' && text.at(start - 1) != u'\r')
        --start;
    qsizetype end = start;
    while (end < text.size() && (text.at(end) == u' ' || text.at(end) == u'\t'))
        ++end;
    return text.mid(start, end - start);
}

} // namespace

const QStringList &TPLuaCompletion::keywords()
{
    static const QStringList words = {"and",   "break", "do",       "else", "elseif", "end",
                                      "false", "for",   "function", "goto", "if",     "in",
                                      "local", "nil",   "not",      "or",   "repeat", "return",
                                      "then",  "true",  "until",    "while"};
    return words;
}

TPCompletionContext TPLuaCompletion::contextAt(const QString &text, qsizetype cursor)
{
    TPCompletionContext context;
    cursor = std::clamp<qsizetype>(cursor, 0, text.size());
    qsizetype start = cursor;
    while (start > 0 && isNamePart(text.at(start - 1)))
        --start;
    // A number is no name.
    if (start < cursor && !isNameStart(text.at(start)))
        return context;
    context.start = start;
    context.prefix = text.mid(start, cursor - start);
    if (start > 0 && (text.at(start - 1) == u'.' || text.at(start - 1) == u':')) {
        qsizetype objectStart = start - 1;
        while (objectStart > 0 && isNamePart(text.at(objectStart - 1)))
            --objectStart;
        context.object = text.mid(objectStart, start - 1 - objectStart);
        // "a..b" is a concatenation, not a member.
        if (context.object.isEmpty() || !isNameStart(context.object.front()))
            return context;
    }
    if (context.prefix.isEmpty() && context.object.isEmpty())
        return context;
    // Nothing is offered in a comment or a string.
    Lexer lexer(text, start);
    while (lexer.next().kind != Token::End) {
    }
    context.active = !lexer.endedInside();
    return context;
}

std::shared_ptr<const TPLuaCompletion::FileNames>
TPLuaCompletion::readFileNames(const QString &text, qsizetype start, qsizetype cursor)
{
    auto names = std::make_shared<FileNames>();
    names->text.reserve(text.size() - (cursor - start));
    names->text.append(QStringView(text).left(start)).append(QStringView(text).mid(cursor));
    names->start = start;
    names->tail = text.size() - cursor;
    readFile(*names, start);
    return names;
}

bool TPLuaCompletion::holds(const FileNames &names, const QString &text, qsizetype start,
                            qsizetype cursor)
{
    return names.start == start && text.size() - cursor == names.tail &&
           QStringView(text).left(start) == QStringView(names.text).left(start) &&
           QStringView(text).mid(cursor) == QStringView(names.text).mid(start);
}

QList<TPCompletionCandidate> TPLuaCompletion::candidates(const QString &text, qsizetype cursor,
                                                         const TreeNames &tree, int limit)
{
    const TPCompletionContext context = contextAt(text, cursor);
    if (!context.active)
        return {};
    return candidates(context, *readFileNames(text, context.start, cursor), tree, limit);
}

QList<TPCompletionCandidate> TPLuaCompletion::candidates(const TPCompletionContext &context,
                                                         const FileNames &file,
                                                         const TreeNames &tree, int limit)
{
    if (!context.active)
        return {};
    QHash<QString, TPCompletionCandidate> found;
    const auto offer = [&](const QString &name, TPCompletionCandidate::Source source, int uses,
                           const QString &hint = {}, bool block = false) {
        const std::optional<bool> prefix = matches(name, context.prefix);
        if (!prefix || (name == context.prefix && !block && hint.isEmpty()))
            return;
        auto existing = found.find(name);
        // A name comes once, from the source that ranks it highest.
        if (existing != found.end() && existing->source <= source)
            return;
        found.insert(name, {name, hint, source, uses, *prefix, block});
    };
    using Source = TPCompletionCandidate::Source;
    if (!context.object.isEmpty()) {
        for (const QStringView field : file.fields.value(context.object))
            offer(field.toString(), Source::File, file.uses.value(field));
        for (const Library &library : kLibraries) {
            if (context.object != QLatin1String(library.name))
                continue;
            for (const LibraryEntry *entry = library.begin; entry != library.end; ++entry)
                offer(
                    QLatin1String(entry->name), Source::Library, 0,
                    hintFor(context.object + u'.' + QLatin1String(entry->name), entry->parameters));
        }
    } else {
        for (const QStringView name : file.inScope)
            offer(name.toString(), Source::InScope, file.uses.value(name));
        for (const QStringView name : file.functions)
            offer(name.toString(), Source::File, file.uses.value(name));
        for (const auto &[name, uses] : tree.defined)
            offer(name, Source::Tree, uses);
        for (const auto &[name, uses] : tree.engine)
            offer(name, Source::Tree, uses);
        for (const LibraryEntry &entry : kGlobals)
            offer(QLatin1String(entry.name), Source::Library,
                  file.uses.value(QString::fromLatin1(entry.name)),
                  hintFor(QLatin1String(entry.name), entry.parameters));
        for (const QString &keyword : keywords())
            offer(keyword, Source::Library, 0, {}, kBlockKeywords.contains(keyword));
    }
    QList<TPCompletionCandidate> ranked = found.values();
    std::sort(ranked.begin(), ranked.end(), [](const auto &a, const auto &b) {
        return std::make_tuple(!a.prefixMatch, a.source, -a.uses, a.name) <
               std::make_tuple(!b.prefixMatch, b.source, -b.uses, b.name);
    });
    if (ranked.size() > limit)
        ranked.resize(limit);
    return ranked;
}

TPLuaCompletion::Insertion TPLuaCompletion::insertion(const QString &text,
                                                      const TPCompletionContext &context,
                                                      const TPCompletionCandidate &candidate,
                                                      const QString &indentUnit,
                                                      const QString &newline)
{
    const QString typed = context.prefix;
    TPTextEdit edit{context.start, typed, candidate.name};
    qsizetype cursor = context.start + candidate.name.size();
    if (candidate.block) {
        const QString indent = indentOfLine(text, context.start);
        const QString inner = indent + indentUnit;
        const QString &word = candidate.name;
        if (word == QLatin1String("repeat")) {
            edit.inserted = word + newline + inner;
            cursor = context.start + edit.inserted.size();
            edit.inserted += newline + indent + QStringLiteral("until ");
        } else {
            // The header is typed next: the cursor waits where it goes.
            const QString head =
                word == QLatin1String("function") ? QStringLiteral("function ") : word + u' ';
            const QString tail = word == QLatin1String("if")         ? QStringLiteral(" then")
                                 : word == QLatin1String("function") ? QStringLiteral("()")
                                                                     : QStringLiteral(" do");
            edit.inserted =
                head + tail + newline + inner + newline + indent + QStringLiteral("end");
            cursor = context.start + head.size();
        }
    }
    return {edit, cursor};
}
