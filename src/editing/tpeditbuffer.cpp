#include "editing/tpeditbuffer.h"

#include "editing/tpcodeeditrules.h"

#include <QMetaObject>

#include <algorithm>

TPEditBuffer::TPEditBuffer(QObject *parent) : QObject(parent) {}

void TPEditBuffer::setText(const QString &text)
{
    m_text.setText(text);
    const QString previousUnit = m_indentUnit;
    m_indentUnit = TPCodeEditRules::indentUnit(m_text);
    if (m_indentUnit != previousUnit)
        emit indentChanged();
    m_history.clear();
    m_selection = {0, 0};
    if (m_view)
        m_view->showWholeText();
    emit historyChanged();
    afterChange();
}

void TPEditBuffer::attachView(TPBufferView *view)
{
    m_view = view;
    if (m_view)
        m_view->showWholeText();
}

int TPEditBuffer::indentColumns() const
{
    return m_indentUnit == QLatin1String("\t") ? 4 : int(m_indentUnit.size());
}

std::pair<qsizetype, qsizetype> TPEditBuffer::selection() const
{
    return m_view ? m_view->selection() : m_selection;
}

void TPEditBuffer::select(qsizetype anchor, qsizetype cursor)
{
    const qsizetype size = m_text.text().size();
    m_selection = {std::clamp<qsizetype>(anchor, 0, size), std::clamp<qsizetype>(cursor, 0, size)};
    if (m_view)
        m_view->select(m_selection.first, m_selection.second);
    emit selectionMoved();
}

QList<TPTextEdit> TPEditBuffer::applyChanges(const QList<TPTextEdit> &edits)
{
    QList<TPTextEdit> made;
    if (m_view)
        m_view->beginChanges();
    for (const TPTextEdit &edit : edits) {
        const TPTextEdit change = m_text.widened(edit.offset, edit.removed.size(), edit.inserted);
        if (change.removed == change.inserted)
            continue;
        // The lines the change touches, and one more on each side, where a CR and an LF may
        // join into one line break or come apart.
        const int firstLine = std::max(m_text.lineAt(change.offset) - 1, 0);
        const int lastLine = std::min(m_text.lineAt(change.offset + change.removed.size()) + 1,
                                      m_text.lineCount() - 1);
        const int linesAfter = m_text.lineCount() - 1 - lastLine;
        made.append(m_text.apply(change));
        if (m_view)
            m_view->replaceLines(firstLine, lastLine, m_text.lineCount() - 1 - linesAfter);
    }
    if (m_view)
        m_view->endChanges();
    return made;
}

void TPEditBuffer::applyStep(const QList<TPTextEdit> &edits, std::optional<qsizetype> cursorAfter)
{
    const QList<TPTextEdit> made = applyChanges(edits);
    if (made.isEmpty()) {
        if (cursorAfter)
            select(*cursorAfter, *cursorAfter);
        return;
    }
    m_history.record(made, false);
    emit historyChanged();
    afterChange();
    const qsizetype end = made.last().offset + made.last().inserted.size();
    select(cursorAfter.value_or(end), cursorAfter.value_or(end));
}

void TPEditBuffer::recordShownChange(int line, int column, qsizetype removedUnits,
                                     const QString &shownText)
{
    const TPTextEdit edit = m_text.applyDocumentChange(line, column, removedUnits, shownText);
    if (edit.isNull())
        return;
    m_history.record({edit}, true);
    emit historyChanged();
    afterChange();
    emit typed();
    // A closing word typed in the view moves its line back once the view's own change is
    // done.
    if (edit.removed.isEmpty() && edit.inserted.size() == 1)
        QMetaObject::invokeMethod(
            this, [this, after = edit.offset + 1] { outdentClosingAt(after); },
            Qt::QueuedConnection);
}

void TPEditBuffer::outdentClosingAt(qsizetype cursor)
{
    if (cursor > m_text.text().size() || selection() != std::pair(cursor, cursor))
        return;
    if (const auto action = TPCodeEditRules::outdentClosing(m_text, cursor, m_indentUnit))
        applyStep({action->edit}, action->cursor);
}

void TPEditBuffer::afterChange()
{
    ++m_revision;
    emit edited();
}

void TPEditBuffer::undo()
{
    replayHistoryStep(m_history.takeUndo());
}

void TPEditBuffer::redo()
{
    replayHistoryStep(m_history.takeRedo());
}

void TPEditBuffer::replayHistoryStep(const TPEditHistory::Step &step)
{
    if (step.isEmpty())
        return;
    applyChanges(step);
    emit historyChanged();
    afterChange();
    const qsizetype end = step.last().offset + step.last().inserted.size();
    select(end, end);
}

void TPEditBuffer::typeCharacter(QChar character)
{
    const auto [anchor, cursor] = selection();
    if (const auto action = TPCodeEditRules::typed(m_text, anchor, cursor, character)) {
        applyStep({action->edit}, action->cursor);
        emit typed();
        return;
    }
    const qsizetype from = std::min(anchor, cursor);
    applyStep({{from, m_text.text().mid(from, std::abs(cursor - anchor)), QString(character)}});
    outdentClosingAt(from + 1);
    emit typed();
}

void TPEditBuffer::newLine()
{
    const auto [anchor, cursor] = selection();
    const TPCodeEditRules::Action action =
        TPCodeEditRules::newLine(m_text, anchor, cursor, m_indentUnit);
    applyStep({action.edit}, action.cursor);
    emit typed();
}

bool TPEditBuffer::backspaceEmptyPair()
{
    const auto [anchor, cursor] = selection();
    const auto action = TPCodeEditRules::backspace(m_text, anchor, cursor);
    if (action)
        applyStep({action->edit}, action->cursor);
    return action.has_value();
}

void TPEditBuffer::insertIndent()
{
    const auto [anchor, cursor] = selection();
    const qsizetype from = std::min(anchor, cursor);
    applyStep({{from, m_text.text().mid(from, std::abs(cursor - anchor)), m_indentUnit}});
}

void TPEditBuffer::indent()
{
    const auto [anchor, cursor] = selection();
    applyStep(TPCodeEditRules::indentLines(m_text, anchor, cursor, m_indentUnit),
              cursor + m_indentUnit.size());
}

void TPEditBuffer::outdent()
{
    const auto [anchor, cursor] = selection();
    const int line = m_text.lineAt(cursor);
    const qsizetype before = m_text.lineStart(line);
    const QList<TPTextEdit> edits =
        TPCodeEditRules::outdentLines(m_text, anchor, cursor, m_indentUnit);
    // The cursor keeps its place in its line, less what its own line lost.
    qsizetype removedHere = 0;
    qsizetype removedBefore = 0;
    for (const TPTextEdit &edit : edits) {
        if (edit.offset == before)
            removedHere = std::min(edit.removed.size(), cursor - before);
        else if (edit.offset < before)
            removedBefore += edit.removed.size();
    }
    applyStep(edits, cursor - removedHere - removedBefore);
}

void TPEditBuffer::revealSelection(qsizetype anchor, qsizetype cursor)
{
    select(anchor, cursor);
    emit lineJumped();
}

void TPEditBuffer::goToLine(int line)
{
    const int index = std::clamp(line - 1, 0, m_text.lineCount() - 1);
    select(m_text.lineStart(index), m_text.lineStart(index));
    emit lineJumped();
}
