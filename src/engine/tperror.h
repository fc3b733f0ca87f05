#pragma once

#include <QString>

// An error as the app passes it around: where it comes from, its code, and the message
// ready to show. Engine errors use the domain "TPEngineAPI" and code -1; transport errors
// keep the socket's own errno code and system message under the domain "POSIX".
struct TPError
{
    QString domain;
    int code = 0;
    QString localizedDescription;

    friend bool operator==(const TPError &, const TPError &) = default;
};
