#pragma once

#include <QString>

#include <optional>

// Optional texts as one comparable, printable text: QCOMPARE then shows both sides.
inline const QString TPNone = QStringLiteral("<none>");

inline QString orNone(const std::optional<QString> &text)
{
    return text ? *text : TPNone;
}
