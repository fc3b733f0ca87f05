#include "editing/tpedithistory.h"

#include <algorithm>

namespace {

bool holdsLineBreak(const QString &text)
{
    return std::any_of(text.begin(), text.end(), [](QChar unit) {
        return unit == u'\n' || unit == u'\r' || unit == QChar::ParagraphSeparator;
    });
}

} // namespace

void TPEditHistory::record(const Step &step, bool typed)
{
    Step applied;
    std::copy_if(step.begin(), step.end(), std::back_inserter(applied),
                 [](const TPTextEdit &edit) { return !edit.isNull(); });
    if (applied.isEmpty())
        return;
    m_redo.clear();
    if (typed && applied.size() == 1 && m_runOpen && extendRun(applied.first()))
        return;
    m_undo.append(applied);
    // A run goes on only from a single typed change within one line.
    const TPTextEdit &only = applied.first();
    m_runOpen = typed && applied.size() == 1 && !holdsLineBreak(only.inserted) &&
                !holdsLineBreak(only.removed) &&
                (only.removed.isEmpty() || only.inserted.isEmpty());
}

bool TPEditHistory::extendRun(const TPTextEdit &edit)
{
    if (m_undo.isEmpty() || m_undo.last().size() != 1 || holdsLineBreak(edit.inserted) ||
        holdsLineBreak(edit.removed))
        return false;
    TPTextEdit &last = m_undo.last().first();
    const bool typing = edit.removed.isEmpty() && last.removed.isEmpty();
    const bool deleting = edit.inserted.isEmpty() && last.inserted.isEmpty();
    if (typing && edit.offset == last.offset + last.inserted.size()) {
        last.inserted += edit.inserted;
        return true;
    }
    if (deleting && edit.offset + edit.removed.size() == last.offset) { // backspace
        last.offset = edit.offset;
        last.removed.prepend(edit.removed);
        return true;
    }
    if (deleting && edit.offset == last.offset) { // forward delete
        last.removed += edit.removed;
        return true;
    }
    return false;
}

void TPEditHistory::clear()
{
    m_undo.clear();
    m_redo.clear();
    m_runOpen = false;
}

TPEditHistory::Step TPEditHistory::takeUndo()
{
    if (m_undo.isEmpty())
        return {};
    const Step step = m_undo.takeLast();
    m_redo.append(step);
    m_runOpen = false;
    Step inverse;
    for (auto it = step.rbegin(); it != step.rend(); ++it)
        inverse.append(it->inverted());
    return inverse;
}

TPEditHistory::Step TPEditHistory::takeRedo()
{
    if (m_redo.isEmpty())
        return {};
    const Step step = m_redo.takeLast();
    m_undo.append(step);
    m_runOpen = false;
    return step;
}
