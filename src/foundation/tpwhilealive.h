#pragma once

#include <QPointer>

#include <utility>

// A callable for work that may finish after the object that asked for it is gone (an engine
// completion, an alert's action): it runs `body` with the object as its first argument, then
// whatever it is called with, and does nothing once the object has been deleted. A
// completion that must report even then (a save's caller is told false) does not use it.
template <typename Object, typename Body>
auto TPWhileAlive(Object *object, Body body)
{
    return [guard = QPointer<Object>(object), body = std::move(body)](auto &&...arguments) {
        if (guard)
            body(guard.data(), std::forward<decltype(arguments)>(arguments)...);
    };
}
