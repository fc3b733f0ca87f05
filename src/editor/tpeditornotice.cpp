#include "editor/tpeditornotice.h"

QVariantList TPEditorNotice::actions() const
{
    QVariantList list;
    for (const auto &[id, title] : m_actions)
        list.append(QVariantMap{{QStringLiteral("id"), id}, {QStringLiteral("title"), title}});
    return list;
}

void TPEditorNotice::show(const QString &text, const QList<Action> &actions)
{
    m_text = text;
    m_actions = actions;
    emit changed();
}

void TPEditorNotice::clear()
{
    if (!shown())
        return;
    m_text.clear();
    m_actions.clear();
    emit changed();
}

void TPEditorNotice::trigger(const QString &id)
{
    for (const Action &action : m_actions) {
        if (action.first == id) {
            emit triggered(id);
            return;
        }
    }
}
