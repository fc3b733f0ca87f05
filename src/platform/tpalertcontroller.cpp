#include "platform/tpalertcontroller.h"

#include <algorithm>

TPAlertAction::TPAlertAction(const QString &title, Style style, std::function<void()> handler,
                             QObject *parent)
    : QObject(parent), m_title(title), m_style(style), m_handler(std::move(handler))
{}

void TPAlertAction::setEnabled(bool enabled)
{
    if (m_enabled == enabled)
        return;
    m_enabled = enabled;
    emit enabledChanged();
}

void TPAlertAction::setOffered(bool offered)
{
    if (m_offered == offered)
        return;
    m_offered = offered;
    emit offeredChanged();
}

void TPAlertAction::trigger() const
{
    if (m_handler)
        m_handler();
}

TPAlertController::TPAlertController(const QString &title, const QString &message, Style style,
                                     QObject *parent)
    : QObject(parent), m_title(title), m_message(message), m_style(style)
{}

void TPAlertController::addTextField(const TextField &field)
{
    m_hasTextField = true;
    m_field = field;
}

void TPAlertController::setTextChangedHandler(std::function<void(const QString &)> handler)
{
    m_textChangedHandler = std::move(handler);
}

TPAlertAction *TPAlertController::addAction(const QString &title, TPAlertAction::Style style,
                                            std::function<void()> handler)
{
    auto *action = new TPAlertAction(title, style, std::move(handler), this);
    m_actions.append(action);
    return action;
}

void TPAlertController::setText(const QString &text)
{
    if (m_field.text == text)
        return;
    m_field.text = text;
    emit textChanged();
    if (m_textChangedHandler)
        m_textChangedHandler(text);
}

void TPAlertController::triggerAction(int index)
{
    if (index < 0 || index >= m_actions.size() || !m_actions.at(index)->isEnabled())
        return;
    emit dismissed();
    m_actions.at(index)->trigger();
}

void TPAlertController::setPreferredAction(TPAlertAction *action)
{
    if (m_actions.contains(action))
        m_preferred = action;
}

int TPAlertController::defaultActionIndex() const
{
    if (m_style == Style::ActionSheet)
        return -1;
    if (m_preferred)
        return int(m_actions.indexOf(m_preferred));
    if (m_actions.size() == 1)
        return 0;
    for (qsizetype i = m_actions.size() - 1; i >= 0; --i) {
        if (m_actions.at(i)->style() == TPAlertAction::Style::Default)
            return int(i);
    }
    return -1;
}

void TPAlertController::submit()
{
    triggerAction(defaultActionIndex());
}

void TPAlertController::pressKey(int key)
{
    if (key == Qt::Key_Return || key == Qt::Key_Enter)
        submit();
    else if (key == Qt::Key_Escape)
        cancelByKey();
}

void TPAlertController::cancelByKey()
{
    if (m_style == Style::Alert && m_actions.size() == 1)
        triggerAction(0);
    else
        dismissByCancel();
}

void TPAlertController::dismissByCancel()
{
    for (int i = 0; i < m_actions.size(); ++i) {
        if (m_actions.at(i)->style() == TPAlertAction::Style::Cancel) {
            triggerAction(i);
            return;
        }
    }
}

int TPAlertController::selectionStart() const
{
    const int end = int(m_field.text.size());
    return m_field.selectionStart < 0 ? end : std::min(m_field.selectionStart, end);
}

int TPAlertController::selectionEnd() const
{
    const int end = int(m_field.text.size());
    return m_field.selectionEnd < 0 ? end : std::clamp(m_field.selectionEnd, selectionStart(), end);
}

int TPAlertController::inputMethodHints() const
{
    Qt::InputMethodHints hints = Qt::ImhNone;
    if (!m_field.autocorrection)
        hints |= Qt::ImhNoPredictiveText;
    if (!m_field.autocapitalization)
        hints |= Qt::ImhNoAutoUppercase;
    return int(hints);
}

QString TPAlertController::accessibleName() const
{
    if (!m_title.isEmpty())
        return m_title;
    if (!m_message.isEmpty())
        return m_message;
    QStringList titles;
    for (const TPAlertAction *action : m_actions)
        titles.append(action->title());
    return titles.join(QStringLiteral(", "));
}

QQmlListProperty<TPAlertAction> TPAlertController::actionList()
{
    return QQmlListProperty<TPAlertAction>(this, &m_actions);
}

void TPAlertController::setAnchor(QQuickItem *anchor)
{
    if (m_anchor == anchor)
        return;
    if (m_anchor)
        disconnect(m_anchor, &QObject::destroyed, this, &TPAlertController::anchorChanged);
    m_anchor = anchor;
    // A row scrolled away or a list reloaded takes its button, and the sheet its place.
    if (anchor)
        connect(anchor, &QObject::destroyed, this, &TPAlertController::anchorChanged);
    emit anchorChanged();
}
