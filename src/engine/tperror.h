#pragma once

#include <QString>

// An error as the app passes it around: where it comes from, its code, and the message
// ready to show. Engine errors use the domain "TPEngineAPI" and code -1; transport errors
// keep libcurl's own code and message under the domain "libcurl".
struct TPError
{
    QString domain;
    int code = 0;
    QString localizedDescription;

    friend bool operator==(const TPError &, const TPError &) = default;
};
