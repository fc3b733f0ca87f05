#pragma once

#include "editor/tpscripthistory.h"

#include <QObject>
#include <QStringList>
#include <QTest>

#include <optional>

// Every version the history lists for `path`, newest first, each as its bytes in hex (so
// that a comparison shows exactly which bytes differ).
inline QStringList TPHistoryContents(const QString &path)
{
    std::optional<QList<TPScriptVersion>> versions;
    QObject context;
    TPScriptHistory::shared()->versions(
        path, &context, [&versions](const QList<TPScriptVersion> &found) { versions = found; });
    if (!QTest::qWaitFor([&] { return versions.has_value(); }))
        return {QStringLiteral("<no answer>")};
    QStringList contents;
    for (const TPScriptVersion &version : *versions) {
        std::optional<QByteArray> bytes;
        TPScriptHistory::shared()->contents(
            version.blob, &context, [&bytes](const std::optional<QByteArray> &b) { bytes = b; });
        if (!QTest::qWaitFor([&] { return bytes.has_value(); }))
            return {QStringLiteral("<no answer>")};
        contents.append(QString::fromLatin1(bytes->toHex()));
    }
    return contents;
}
