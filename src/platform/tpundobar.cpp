#include "platform/tpundobar.h"

TPUndoBar::TPUndoBar(QObject *parent) : QObject(parent)
{
    m_timer.setSingleShot(true);
    m_timer.setInterval(DefaultTimeoutMs);
    connect(&m_timer, &QTimer::timeout, this, &TPUndoBar::dismiss);
}

void TPUndoBar::offer(const QString &text, const QString &actionTitle, std::function<void()> undo)
{
    m_text = text;
    m_actionTitle = actionTitle;
    m_undo = std::move(undo);
    m_shown = true;
    m_timer.start();
    emit changed();
}

void TPUndoBar::trigger()
{
    if (!m_shown)
        return;
    const std::function<void()> undo = std::move(m_undo);
    dismiss();
    if (undo)
        undo();
}

void TPUndoBar::dismiss()
{
    m_timer.stop();
    m_undo = nullptr;
    if (!m_shown)
        return;
    m_shown = false;
    emit changed();
}
