#pragma once

#include "tpedithistory.h"
#include "tpeditortextbinding.h"
#include "tpfindreplace.h"
#include "tpluahighlighter.h"
#include "tpluasyntaxchecker.h"
#include "tpscripttext.h"

#include <QKeyEvent>
#include <QObject>
#include <QPointer>
#include <QQuickItem>
#include <QTextCursor>
#include <QTimer>
#include <QVariantMap>
#include <QtQml/qqmlregistration.h>

#include <optional>

class QTextDocument;

// The editing side of the editor screen: the script's exact text and everything a code
// editor does to it. The view's text item only shows the text: it is attached here, its
// edits are mapped onto the text, and the keys a code editor treats specially (Enter, Tab,
// brackets and quotes, undo and redo) are handled here before the item sees them.
class TPCodeEditor : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Owned by the editor screen")
    Q_PROPERTY(bool canUndo READ canUndo NOTIFY historyChanged)
    Q_PROPERTY(bool canRedo READ canRedo NOTIFY historyChanged)
    Q_PROPERTY(int syntaxErrorLine READ syntaxErrorLine NOTIFY syntaxChecked)
    Q_PROPERTY(QString syntaxMessage READ syntaxMessage NOTIFY syntaxChecked)
    Q_PROPERTY(QStringList symbolKeys READ symbolKeys CONSTANT)
    Q_PROPERTY(TPFindReplace *find READ find CONSTANT)

public:
    // `chunkName` names the script in the compiler's messages (the file name).
    explicit TPCodeEditor(const QString &chunkName, QObject *parent = nullptr);
    ~TPCodeEditor() override;

    // The whole text, as set or as edited since.
    const QString &text() const { return m_text.text(); }
    // Replaces the whole text (a file was read): the history starts afresh.
    void setText(const QString &text);

    // Shows the text in a Qt Quick TextEdit (or TextArea) and edits through it.
    Q_INVOKABLE void attachView(QQuickItem *textItem);
    // Shows the text in a document: a bare one, for callers without a view, or the document
    // of a view's text item.
    void attachDocument(QTextDocument *document, QObject *textItem = nullptr);
    QTextDocument *document() const { return m_binding.document(); }

    bool canUndo() const { return m_history.canUndo(); }
    bool canRedo() const { return m_history.canRedo(); }
    int syntaxErrorLine() const { return m_checker->result().line; }
    // Whether typing has started the wait before the next syntax check.
    bool syntaxCheckPending() const { return m_checker->pending(); }
    QString syntaxMessage() const { return m_checker->result().message; }
    // Columns one indent step takes: the file's own spaces, or four for a tab.
    int indentColumns() const;
    // The keys a phone keyboard hides, in the order the key row shows them.
    QStringList symbolKeys() const;
    TPFindReplace *find() const { return m_find; }

    // The selection as offsets into the text: the fixed end and the moving end (the cursor).
    std::pair<qsizetype, qsizetype> selection() const;
    // Moves the cursor (and the view to it), selecting from `anchor` when it differs.
    void select(qsizetype anchor, qsizetype cursor);

    // Makes changes as one step of the history and puts the cursor at `cursorAfter`, or
    // after the last change.
    void applyStep(const QList<TPTextEdit> &edits, std::optional<qsizetype> cursorAfter = {});

    bool eventFilter(QObject *watched, QEvent *event) override;

public slots:
    void undo();
    void redo();
    // A key of the symbol row: "Tab", "Indent" and "Outdent" act on the lines, any other key
    // types its text at the cursor as typing would.
    void pressSymbolKey(const QString &key);
    void typeCharacter(QChar character);
    void newLine();
    void indent();
    void outdent();
    // Puts the cursor at the start of a 1-based line (clamped to the text).
    void goToLine(int line);
    // Puts the cursor on the line the syntax check marked, if any.
    void goToSyntaxError();
    // Compiles the text now instead of after the pause in typing.
    void checkSyntaxNow();

signals:
    // The text changed, by typing or in code.
    void edited();
    void historyChanged();
    void syntaxChecked();
    // The view should bring the cursor into sight.
    void cursorMoved();
    // The cursor was sent to a line (go to line, the syntax message): the view shows that
    // line in the middle, clear of the bars above and below.
    void lineJumped();
    // A new text brought its own indent step.
    void indentChanged();

private slots:
    void redrawText();

private:
    // Gives the colouring the theme's token colours.
    void applySyntaxColors();
    void onDocumentEdited(const TPTextEdit &edit);
    // Moves the cursor's line back a level when a closing word was just typed before it.
    void outdentClosingAt(qsizetype cursor);
    void afterChange();
    // Applies an undo or redo step taken from the history, without recording it again.
    void replayHistoryStep(const TPEditHistory::Step &step);
    bool handleKey(QKeyEvent *event);
    bool backspace();

    TPScriptText m_text;
    TPEditHistory m_history;
    TPEditorTextBinding m_binding;
    QPointer<TPLuaHighlighter> m_highlighter;
    QPointer<QQuickItem> m_view;
    // The selection when no view is attached.
    QTextCursor m_cursor;
    QString m_indentUnit = QStringLiteral("    ");
    TPFindReplace *m_find;
    // The syntax check, once typing pauses.
    TPLuaSyntaxChecker *m_checker;
};
