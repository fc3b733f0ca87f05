#include "platform/tpkeyboardinsets.h"

#include <QGuiApplication>
#include <QInputMethod>
#include <QQuickItem>
#include <QRectF>

#include <algorithm>

void TPKeyboardInsets::setInsets(const QMarginsF &insets)
{
    if (m_insets == insets)
        return;
    m_insets = insets;
    emit insetsChanged();
}

void TPKeyboardInsets::keyboardWillChangeFrame(const QVariant &endFrame, qreal viewHeight)
{
    if (!endFrame.isValid() || endFrame.isNull() || !endFrame.canConvert<QRectF>())
        return;
    const qreal overlap = std::max<qreal>(0, viewHeight - endFrame.toRectF().top());
    QMarginsF insets = m_insets;
    insets.setBottom(overlap);
    setInsets(insets);
    setKeyboardShown(overlap > 0);
}

void TPKeyboardInsets::keyboardWillHide()
{
    QMarginsF insets = m_insets;
    insets.setBottom(0);
    setInsets(insets);
    setKeyboardShown(false);
}

void TPKeyboardInsets::followKeyboard(QQuickItem *view)
{
    const QInputMethod *keyboard = QGuiApplication::inputMethod();
    if (!view || !keyboard->isVisible()) {
        keyboardWillHide();
        return;
    }
    const QRectF frame = keyboard->keyboardRectangle();
    keyboardWillChangeFrame(QRectF(view->mapFromScene(frame.topLeft()), frame.size()),
                            view->height());
}

void TPKeyboardInsets::setKeyboardShown(bool shown)
{
    if (m_keyboardShown == shown)
        return;
    m_keyboardShown = shown;
    emit keyboardShownChanged();
}
