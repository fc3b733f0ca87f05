#pragma once

#include "editing/tpeditbuffer.h"
#include "editing/tpfindreplace.h"
#include "editing/tpluahighlighter.h"
#include "editing/tpluasyntaxchecker.h"
#include "editor/tpcompleter.h"
#include "editor/tpeditingtypes.h"
#include "editor/tpeditortextbinding.h"
#include "editor/tphangingindent.h"
#include "editor/tplintreport.h"
#include "platform/tptitledrowsmodel.h"

#include <QObject>
#include <QPointer>
#include <QQuickItem>
#include <QtQml/qqmlregistration.h>

class QTextDocument;

// The code editor of the editor screen: a script's edit buffer shown in the view's text
// item, coloured, checked for syntax errors as typing pauses, with find and replace and the
// row of keys a phone keyboard hides. The editing itself is the buffer's; this puts the
// parts together and offers them to the view.
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
    // Whether the find bar is shown; while it is, every match in the text is marked.
    Q_PROPERTY(bool findOpen READ findOpen WRITE setFindOpen NOTIFY findOpenChanged)
    // What the find bar says in place of its count after Replace All, until the query or
    // the text changes; empty otherwise.
    Q_PROPERTY(QString findNote READ findNote NOTIFY findNoteChanged)
    // The script's functions, as the outline shows them since it was last refreshed.
    Q_PROPERTY(TPTitledRowsModel *outline READ outline CONSTANT)
    // Whether the outline is shown. Opening it lists the functions of the text as it is then;
    // choosing one closes it.
    Q_PROPERTY(bool outlineOpen READ outlineOpen WRITE setOutlineOpen NOTIFY outlineOpenChanged)
    // luacheck's warnings about the text, once it compiles.
    Q_PROPERTY(TPLintReport *lint READ lint CONSTANT)
    // The names offered while a name is typed.
    Q_PROPERTY(TPCompleter *completer READ completer CONSTANT)

public:
    // `chunkName` names the script in the compiler's messages (the file name).
    explicit TPCodeEditor(const QString &chunkName, QObject *parent = nullptr);

    TPEditBuffer *buffer() { return &m_buffer; }
    const QString &text() const { return m_buffer.text(); }
    // Replaces the whole text (a file was read): the history starts afresh.
    void setText(const QString &text);

    // Shows the text in a Qt Quick TextEdit (or TextArea) and edits through it.
    Q_INVOKABLE void attachView(QQuickItem *textItem);
    // Shows the text in a bare document, for callers without a view.
    void attachDocument(QTextDocument *document);
    QTextDocument *document() const { return m_binding.document(); }

    bool canUndo() const { return m_buffer.canUndo(); }
    bool canRedo() const { return m_buffer.canRedo(); }
    int syntaxErrorLine() const { return m_checker->result().line; }
    // Whether typing has started the wait before the next syntax check.
    bool syntaxCheckPending() const { return m_checker->pending(); }
    QString syntaxMessage() const { return m_checker->result().message; }
    // The keys a phone keyboard hides, in the order the key row shows them.
    QStringList symbolKeys() const;
    TPFindReplace *find() { return &m_find; }
    bool findOpen() const { return m_findOpen; }
    void setFindOpen(bool open);
    QString findNote() const { return m_findNote; }
    // How the view lays out the lines: wrapped or not, and a space's width in its font.
    // Wrapped lines hang below their indent.
    void setLineLayout(bool wrap, qreal spaceWidth);
    // The content position at which the text shows no cut row at its top: `contentY`, or
    // the top of the row it falls in. `topPadding` is the text's space above its first line.
    Q_INVOKABLE qreal wholeRowContentY(qreal contentY, qreal topPadding) const;
    TPTitledRowsModel *outline() { return &m_outline; }
    bool outlineOpen() const { return m_outlineOpen; }
    void setOutlineOpen(bool open);
    TPLintReport *lint() { return &m_lint; }
    TPCompleter *completer() { return &m_completer; }
    // Globals the lint knows besides Lua's own.
    void setKnownGlobals(const QStringList &globals) { m_checker->setKnownGlobals(globals); }

public slots:
    void undo() { m_buffer.undo(); }
    void redo() { m_buffer.redo(); }
    // A key of the symbol row: "Tab", "Indent" and "Outdent" act on the lines, any other key
    // types its text at the cursor as typing would. Each key is a step of its own.
    void pressSymbolKey(const QString &key);
    // Puts the cursor at the start of a 1-based line (clamped to the text).
    void goToLine(int line) { m_buffer.goToLine(line); }
    // Puts the cursor on the line the syntax check marked, if any.
    void goToSyntaxError();
    // Compiles the text now instead of after the pause in typing.
    void checkSyntaxNow() { m_checker->checkNow(); }
    // Lists the functions of the text as it is now: each its name and its line.
    void refreshOutline();
    // Puts the cursor at the start of the line of the outline's function at `row`, and
    // closes the outline.
    void goToOutlineRow(int row);
    // Puts the cursor on the line of the warning the message bar shows.
    void goToLintMessage();
    // Puts the cursor on the line of the warning at `row` of the list, and closes the list.
    void goToLintRow(int row);

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
    void outlineOpenChanged();
    void findOpenChanged();
    void findNoteChanged();

private:
    // Colours the document the text is shown in, with the theme's token colours.
    void colourDocument();
    void applySyntaxColors();
    // Marks every match of the find bar while it is open.
    void markMatches();
    void setFindNote(const QString &note);

    TPEditBuffer m_buffer;
    TPEditorTextBinding m_binding;
    QPointer<TPLuaHighlighter> m_highlighter;
    TPFindReplace m_find;
    bool m_findOpen = false;
    QString m_findNote;
    TPHangingIndent m_hangingIndent;
    qreal m_spaceWidth = 0;
    TPTitledRowsModel m_outline;
    TPLintReport m_lint;
    TPCompleter m_completer;
    // The line of each function the outline lists.
    QList<int> m_outlineLines;
    bool m_outlineOpen = false;
    // The syntax check, once typing pauses.
    TPLuaSyntaxChecker *m_checker;
};
