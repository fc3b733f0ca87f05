#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <optional>

// Where the editor keeps the unsaved text of a file as a draft: one file per script in the
// app's data folder ("drafts"), holding the text's exact UTF-8 bytes, written atomically so
// that a crash leaves the old draft or the new one. Nothing here reaches the engine.
namespace TPDraftStore {

struct Draft
{
    QByteArray bytes;
    QDateTime savedAt;
};

// The folder the drafts live in.
QString folder();
std::optional<Draft> read(const QString &relPath);
// False when the draft could not be written.
bool write(const QString &relPath, const QByteArray &bytes);
void remove(const QString &relPath);
// The file at `from` is now at `to`: its draft, if any, follows it.
void move(const QString &from, const QString &to);

} // namespace TPDraftStore
