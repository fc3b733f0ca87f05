#pragma once

#include <QByteArray>
#include <QString>

// Replaces the file at `path` with `content` so that a reader sees either the old file or
// the new one, never a part: written beside it, then moved over it. Missing parent folders
// are created first. False when the file could not be written.
bool TPWriteFileAtomically(const QString &path, const QByteArray &content);
