#pragma once

#include "editing/tpedithistory.h"
#include "editing/tpscripttext.h"

#include <QObject>

#include <optional>
#include <utility>

// What shows a buffer's text (the editor's view). It follows every change the buffer makes,
// and holds the selection while it shows the text, since the user moves it there.
class TPBufferView
{
public:
    virtual ~TPBufferView() = default;

    // The whole text is new.
    virtual void showWholeText() = 0;
    // One step of changes is about to be shown, and is over.
    virtual void beginChanges() = 0;
    virtual void endChanges() = 0;
    // Lines `first` to `lastBefore` as shown are now lines `first` to `lastAfter` of the text.
    virtual void replaceLines(int first, int lastBefore, int lastAfter) = 0;

    // The selection as offsets into the text: the fixed end and the moving end (the cursor).
    virtual std::pair<qsizetype, qsizetype> selection() const = 0;
    virtual void select(qsizetype anchor, qsizetype cursor) = 0;
};

// A script being edited: its exact text, its history and its selection, and every edit a
// code editor makes to it (typing with its rules, new lines, indenting, undo and redo), all
// as offsets into the exact text. A view attached to it only shows it; the user's typing in
// the view comes back here as changes to record.
class TPEditBuffer : public QObject
{
    Q_OBJECT

public:
    explicit TPEditBuffer(QObject *parent = nullptr);

    const QString &text() const { return m_text.text(); }
    const TPScriptText &script() const { return m_text; }
    // Replaces the whole text (a file was read): the history starts afresh.
    void setText(const QString &text);
    // Counts every change of the text, from any source.
    quint64 revision() const { return m_revision; }

    // Shows the text in `view` from now on (or in none); the view outlives the attachment.
    void attachView(TPBufferView *view);

    // The string one indent step inserts, taken from the file (four spaces when it has none).
    const QString &indentUnit() const { return m_indentUnit; }
    // Columns one indent step takes: the file's own spaces, or four for a tab.
    int indentColumns() const;

    bool canUndo() const { return m_history.canUndo(); }
    bool canRedo() const { return m_history.canRedo(); }

    std::pair<qsizetype, qsizetype> selection() const;
    // Moves the cursor (and the view to it), selecting from `anchor` when it differs.
    void select(qsizetype anchor, qsizetype cursor);

    // Makes changes as one step of the history and puts the cursor at `cursorAfter`, or
    // after the last change.
    void applyStep(const QList<TPTextEdit> &edits, std::optional<qsizetype> cursorAfter = {});
    // Records a change the view already shows (typed or pasted into it): at (line, column),
    // `removedUnits` shown characters became `shownText`, whose line breaks are U+2029.
    void recordShownChange(int line, int column, qsizetype removedUnits, const QString &shownText);

    void undo();
    void redo();
    // Ends the current run of typing, so that the next change is a step of its own.
    void closeRun() { m_history.closeRun(); }

    // A typed character, with the code editor's rules for brackets, quotes and closing words.
    void typeCharacter(QChar character);
    // Enter: a line break in the file's own ending and the indentation the line needs.
    void newLine();
    // Backspace between an empty pair removes both halves; false when Backspace is plain.
    bool backspaceEmptyPair();
    // Replaces the selection with one indent step.
    void insertIndent();
    // One indent level more or less on every line the selection touches.
    void indent();
    void outdent();
    // Puts the cursor at the start of a 1-based line (clamped to the text).
    void goToLine(int line);
    // Selects from `anchor` to `cursor` (clamped to the text) and shows it in the middle.
    void revealSelection(qsizetype anchor, qsizetype cursor);

signals:
    // The text changed, by typing or in code.
    void edited();
    // The user typed (or deleted, or pasted) at the cursor: not an undo, a redo or a change
    // made in code. The view's cursor may move after it.
    void typed();
    void historyChanged();
    // The buffer moved the selection: the view should bring the cursor into sight.
    void selectionMoved();
    // The cursor was sent to a line: the view shows that line in the middle.
    void lineJumped();
    // A new text brought its own indent step.
    void indentChanged();

private:
    void afterChange();
    // Applies changes to the text and to the view; returns them as made.
    QList<TPTextEdit> applyChanges(const QList<TPTextEdit> &edits);
    // Applies an undo or redo step taken from the history, without recording it again.
    void replayHistoryStep(const TPEditHistory::Step &step);
    // Moves the cursor's line back a level when a closing word was just typed before it.
    void outdentClosingAt(qsizetype cursor);

    TPScriptText m_text;
    TPEditHistory m_history;
    TPBufferView *m_view = nullptr;
    // The selection while no view shows the text.
    std::pair<qsizetype, qsizetype> m_selection{0, 0};
    QString m_indentUnit = QStringLiteral("    ");
    quint64 m_revision = 0;
};
