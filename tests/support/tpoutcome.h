#pragma once

#include <QCoreApplication>
#include <QThread>

#include <memory>

// What a completion received, and how: tests check that it ran exactly once, on the main
// thread, and only after the call that started it had returned.
template <typename Result>
struct TPOutcome
{
    int calls = 0;
    bool callReturned = false;
    bool ranOnMainThread = false;
    bool ranAfterReturn = false;
    Result result{};

    // A completion that records into this outcome. Call markReturned() right after the
    // operation that was given it.
    template <typename... Args>
    static auto recorder(const std::shared_ptr<TPOutcome> &outcome)
    {
        return [outcome](Args... args) {
            ++outcome->calls;
            outcome->ranOnMainThread =
                QThread::currentThread() == QCoreApplication::instance()->thread();
            outcome->ranAfterReturn = outcome->callReturned;
            outcome->result = Result{std::move(args)...};
        };
    }
    void markReturned() { callReturned = true; }
};
