#pragma once

#include "editing/tpeditbuffer.h"

#include <QObject>
#include <QPointer>
#include <QTextCursor>

#include <functional>

class QKeyEvent;
class QQuickItem;
class QTextDocument;

// Shows an edit buffer in the view's text item and brings the user's typing back to it.
// The buffer stays the truth: the item's document only ever shows its text. Changes the
// buffer makes are shown line by line, touching only the characters that differ; changes
// typed or pasted into the document are recorded in the buffer position by position, so
// nothing else changes. This is the only code that names the text item's properties, and
// the only filter of its keys and input-method events: the keys a code editor treats
// specially (Enter, Tab, brackets and quotes, undo and redo) become edits of the buffer
// before the item sees them.
class TPEditorTextBinding : public QObject, public TPBufferView
{
    Q_OBJECT

public:
    explicit TPEditorTextBinding(TPEditBuffer *buffer, QObject *parent = nullptr);
    ~TPEditorTextBinding() override;

    // Shows the buffer in a Qt Quick TextEdit (or TextArea) and edits through it. The
    // document's own undo is switched off: the buffer keeps an exact history of its own.
    void bindItem(QQuickItem *textItem);
    // Shows the buffer in a bare document, for callers without a view.
    void bindDocument(QTextDocument *document);
    QTextDocument *document() const { return m_document; }

    // Between text offsets and document positions.
    int documentPosition(qsizetype offset) const;
    qsizetype offsetAt(int documentPosition) const;

    void showWholeText() override;
    void beginChanges() override;
    void endChanges() override;
    void replaceLines(int first, int lastBefore, int lastAfter) override;
    std::pair<qsizetype, qsizetype> selection() const override;
    void select(qsizetype anchor, qsizetype cursor) override;

    bool eventFilter(QObject *watched, QEvent *event) override;
    // Asked first about every key pressed in the text item; a key it takes goes no further
    // (completion's list takes Up, Down, Tab, Return and Escape while it is open).
    void setKeyInterceptor(std::function<bool(int key, Qt::KeyboardModifiers)> interceptor)
    {
        m_keyInterceptor = std::move(interceptor);
    }

signals:
    // The whole text is about to be drawn anew (the item's wrapping changed): whatever
    // decorates the document starts over.
    void redrawing();

private slots:
    void redraw();

private:
    enum class Reload {
        Changed, // the text was replaced
        Redraw,  // the same text, drawn anew from scratch
    };
    void attach(QTextDocument *document, QQuickItem *textItem);
    void reload(Reload why);
    void onContentsChange(int position, int removed, int added);
    bool handleKey(QKeyEvent *event);
    // Replaces the selection with `shown`, touching only the characters that differ.
    static void replaceSelectionMinimally(QTextCursor &cursor, const QString &shown);

    TPEditBuffer *m_buffer;
    QPointer<QTextDocument> m_document;
    // The view's text item, when the document is its: whole texts are given to it, since a
    // text item whose document was replaced behind its back rebuilds far more of its scene
    // on every later keystroke.
    QPointer<QQuickItem> m_textItem;
    // The selection in a bare document; the edits made to it keep it in place.
    QTextCursor m_bareSelection;
    // Where a step of the buffer's changes is being shown.
    QTextCursor m_changes;
    // Set while the binding itself changes the document, whose reports are then ignored.
    bool m_applying = false;
    std::function<bool(int, Qt::KeyboardModifiers)> m_keyInterceptor;
};
