#pragma once

#include "engine/tpengineapi.h"
#include "tpoutcome.h"

#include <QJsonArray>
#include <QTest>

// What the engine operations hand their completions, and helpers that start an operation
// with a completion recording into an outcome.
struct TPListingResult
{
    QJsonArray entries;
    TPEngineAPI::Error error;
};
struct TPTextResult
{
    std::optional<QString> text;
    TPEngineAPI::Error error;
};
struct TPJudgedResult
{
    TPEngineAPI::Error error;
};

inline std::shared_ptr<TPOutcome<TPListingResult>> TPStartListing()
{
    auto outcome = std::make_shared<TPOutcome<TPListingResult>>();
    TPEngineAPI::scriptsWithCompletion(
        TPOutcome<TPListingResult>::recorder<QJsonArray, TPEngineAPI::Error>(outcome));
    outcome->markReturned();
    return outcome;
}

inline std::shared_ptr<TPOutcome<TPTextResult>> TPStartRead(const QString &path)
{
    auto outcome = std::make_shared<TPOutcome<TPTextResult>>();
    TPEngineAPI::readScript(
        path,
        TPOutcome<TPTextResult>::recorder<std::optional<QString>, TPEngineAPI::Error>(outcome));
    outcome->markReturned();
    return outcome;
}

// `operation` is called with the completion of an operation judged by status alone.
template <typename Operation>
std::shared_ptr<TPOutcome<TPJudgedResult>> TPStartJudged(Operation operation)
{
    auto outcome = std::make_shared<TPOutcome<TPJudgedResult>>();
    operation(TPOutcome<TPJudgedResult>::recorder<TPEngineAPI::Error>(outcome));
    outcome->markReturned();
    return outcome;
}
