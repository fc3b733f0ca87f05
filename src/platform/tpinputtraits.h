#pragma once

#include <QObject>
#include <QtQml/qqmlregistration.h>

// What the app's text fields ask of the keyboard, and the focus a button that must leave it
// with the text takes, as numbers the views bind to. Views read them here rather than as
// the Qt namespace's enums: in Qt 6.4 the first lookup of one of those copies the
// namespace's whole meta-object, about 3 ms of the first screen's start. They are plain
// numbers for the same reason: a property typed with one of the namespace's enums makes the
// engine look it up.
class TPInputTraits : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    // Names and search text: typed as they stand, never corrected or capitalised.
    Q_PROPERTY(int verbatim READ verbatim CONSTANT)
    // Lua code: verbatim, and in the Latin alphabet.
    Q_PROPERTY(int code READ code CONSTANT)
    // A line number.
    Q_PROPERTY(int digits READ digits CONSTANT)
    // A button that acts without taking the focus from the text being typed.
    Q_PROPERTY(int keepsFocusAway READ keepsFocusAway CONSTANT)

public:
    using QObject::QObject;

    static int verbatim() { return int(Qt::ImhNoAutoUppercase | Qt::ImhNoPredictiveText); }
    static int code() { return verbatim() | Qt::ImhPreferLatin; }
    static int digits() { return Qt::ImhDigitsOnly; }
    static int keepsFocusAway() { return Qt::NoFocus; }
};
