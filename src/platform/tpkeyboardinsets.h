#pragma once

#include <QMarginsF>
#include <QObject>
#include <QVariant>

class QQuickItem;

// Keeps a screen's content clear of the on-screen keyboard: the content insets (which the
// scroll indicators follow), whose bottom is how far the keyboard's final frame reaches into
// the screen's view, and whether the keyboard is up. The other three insets are the
// screen's own and are never touched by the keyboard.
class TPKeyboardInsets : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    QMarginsF insets() const { return m_insets; }
    void setInsets(const QMarginsF &insets);
    bool keyboardShown() const { return m_keyboardShown; }

    // The keyboard's final frame in the view's coordinates, and the view's height. Nothing
    // happens when the frame is missing or is not a rectangle. A keyboard whose top is below
    // the view's bottom overlaps it by nothing.
    void keyboardWillChangeFrame(const QVariant &endFrame, qreal viewHeight);
    // The keyboard went: the bottom inset is 0.
    void keyboardWillHide();
    // Reads the platform's keyboard (its input method): its frame mapped into `view`, or its
    // hiding, passed on to the two above.
    void followKeyboard(QQuickItem *view);

signals:
    void insetsChanged();
    void keyboardShownChanged();

private:
    void setKeyboardShown(bool shown);

    QMarginsF m_insets;
    bool m_keyboardShown = false;
};
