#pragma once

#include <QString>

#include <optional>

// The two folders the owner file is looked for in. Production code never changes them;
// tests and the desktop run point them at folders of their own.
struct TPOwnerFileFolders
{
    // The rootless jailbreak root; the owner file lives at <root>/var/tmp/tapper_owner.txt.
    QString jailbreakRoot = QStringLiteral("/var/jb");
    // Searched for a hidden ".jbroot-*" folder that holds the same tree as the root.
    QString appGroupFolder = QStringLiteral("/var/mobile/Containers/Shared/AppGroup");
};

TPOwnerFileFolders TPOwnerFileLocations();
void TPSetOwnerFileLocations(const TPOwnerFileFolders &folders);

// <jailbreakRoot>/var/tmp/tapper_owner.txt
QString TPOwnerFilePrimaryPath();

// <appGroupFolder>/<first ".jbroot-" entry in file-system order>/var/tmp/tapper_owner.txt,
// or none. Neither the folder nor the file is checked to exist.
std::optional<QString> TPOwnerFileFallbackPath();

// The stored device name, trimmed; "" when there is none or the file is unreadable.
QString TPReadOwnerFile();

// Writes the trimmed name and a line feed atomically, to the primary location or, failing
// that, to the fallback. False for an all-whitespace name or when neither write succeeds.
bool TPWriteOwnerFile(const QString &name);

// What both name prompts do with the text the user saved: a name that trims to nothing is
// refused silently (false, nothing touched); any other is handed to TPWriteOwnerFile as
// typed (the write trims it) and true is returned, whether or not the write succeeded:
// a failed write is never reported to the user.
bool TPSubmitOwnerName(const QString &typed);

// Removes Unicode White_Space from both ends, as the owner name is always compared and stored.
QString TPTrimmedName(const QString &text);
