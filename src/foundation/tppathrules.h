#pragma once

#include <QString>

#include <functional>
#include <optional>

// The suffix every new script file gets unless its name already ends so (any case).
inline constexpr auto TPScriptSuffix = ".lua";

// Keeps ASCII letters, digits, ".", "_" and "-", turns each space into "_" and drops
// every other UTF-16 unit. The result is always a single path segment (possibly empty).
QString TPSanitizeSegment(const QString &text);

// "folder/name", or just "name" at the root ("").
QString TPJoinPath(const QString &folder, const QString &name);

// The last "/"-separated segment of a relative path (the whole path when it has no "/").
QString TPLastPathSegment(const QString &path);

// The length of a file name's stem, the part before its extension: up to its last ".",
// or the whole name when it has no "." after its first character (".profile", "Makefile").
qsizetype TPNameStemLength(const QString &name);

// The path without its last segment and the "/" before it ("" for an entry at the root).
QString TPParentPath(const QString &path);

// The relative path of an entry the user asked to create in `folder` from the typed text:
// sanitised, with ".lua" appended to a file name that lacks it. None when the name
// sanitises to nothing, which the create dialog reports as a bad name.
std::optional<QString> TPNewEntryPath(const QString &folder, const QString &typed, bool isFolder);

// Where a rename of `path` to the typed text goes: the sanitised name in the same folder.
// None when the name sanitises to nothing or to the current name; the rename dialog then
// does nothing.
std::optional<QString> TPRenameDestination(const QString &path, const QString &typed);

// Where a copy of the file at `path` goes, in the same folder: its name with " copy", then
// " copy 2", " copy 3" and so on, before its extension ("main.lua" gives "main_copy.lua"),
// the first that `isTaken` does not hold. The name is made as a typed one is, so a space
// becomes "_": the engine's requests carry a path as it is.
QString TPCopyPath(const QString &path, const std::function<bool(const QString &)> &isTaken);

// Where the entry at `path` is once the file or folder `from` became `to`: `to` itself, or
// the same place under `to`. None when `path` is neither `from` nor under it.
std::optional<QString> TPMovedPath(const QString &path, const QString &from, const QString &to);
