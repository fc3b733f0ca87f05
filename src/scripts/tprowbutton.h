#pragma once

#include <QMetaType>
#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

// What a row button does and the theme colour it is drawn in, for the views to compare by
// name (TPRowButtonKind.More, TPRowButtonKind.Tint).
namespace TPRowButtonKind {
Q_NAMESPACE
QML_ELEMENT

enum Action { Run, More };
Q_ENUM_NS(Action)
enum Colour { Tint, SecondaryLabel };
Q_ENUM_NS(Colour)

} // namespace TPRowButtonKind

// One button of a list row as its delegate draws it: a title in a colour of the theme, the
// action it reports, and perhaps a spoken name other than its title.
struct TPRowButton
{
    Q_GADGET
    QML_VALUE_TYPE(rowButton)
    Q_PROPERTY(QString title MEMBER title)
    Q_PROPERTY(TPRowButtonKind::Colour colour MEMBER colour)
    Q_PROPERTY(TPRowButtonKind::Action action MEMBER action)
    Q_PROPERTY(QString accessibleName MEMBER accessibleName)
    Q_PROPERTY(bool enabled MEMBER enabled)

public:
    QString title;
    TPRowButtonKind::Colour colour = TPRowButtonKind::Tint;
    TPRowButtonKind::Action action = TPRowButtonKind::More;
    // The title is spoken when this is empty.
    QString accessibleName;
    bool enabled = true;

    friend bool operator==(const TPRowButton &, const TPRowButton &) = default;
};
