#pragma once

#include "editing/tpscripttext.h"

#include <QList>

// The editor's undo and redo, kept as exact changes so that undoing gives back every byte,
// line endings included. One step is one user action: a run of typed characters, a run of
// deletions, a paste, a replace-all.
class TPEditHistory
{
public:
    using Step = QList<TPTextEdit>;

    // Records a step that was just applied. A typed step extends the previous one when it
    // carries on the same run of typing or deleting; any other step closes the run.
    void record(const Step &step, bool typed);
    // Ends the current run of typing, so that the next keystroke starts a new step.
    void closeRun() { m_runOpen = false; }
    void clear();

    bool canUndo() const { return !m_undo.isEmpty(); }
    bool canRedo() const { return !m_redo.isEmpty(); }
    // The changes that undo the last step, in the order to apply them.
    Step takeUndo();
    // The changes that redo the last undone step, in the order to apply them.
    Step takeRedo();

private:
    bool extendRun(const TPTextEdit &edit);

    QList<Step> m_undo;
    QList<Step> m_redo;
    bool m_runOpen = false;
};
