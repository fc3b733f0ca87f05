#pragma once

#include <QString>

#include <optional>

// Maps the relative paths of the protocol onto the script root and refuses every path that
// would leave it: "." or ".." segments, absolute paths, empty segments, and links that
// point outside the root.
class TPDevEnginePaths
{
public:
    explicit TPDevEnginePaths(const QString &root);

    QString root() const { return m_root; }

    // The absolute path for `relative`, or none when it would leave the root. The empty
    // path (the root itself) is refused as well: no operation acts on the root.
    std::optional<QString> resolve(const QString &relative) const;

    // The protocol's relative form of an absolute path under the root.
    QString relativePath(const QString &absolute) const;

private:
    QString m_root;          // absolute, without a trailing "/"
    QString m_canonicalRoot; // the root with every link resolved
};
