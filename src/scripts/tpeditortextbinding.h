#pragma once

#include "tpscripttext.h"

#include <QList>
#include <QObject>
#include <QPointer>

class QTextCursor;
class QTextDocument;

// Keeps a text document (the view's) showing a TPScriptText, and the text following what is
// typed into the document. The text stays the truth: the document only ever shows it.
// Changes made in code are applied to both at once; changes made in the document (typing,
// pasting) are mapped back onto the text position by position, so nothing else changes.
class TPEditorTextBinding : public QObject
{
    Q_OBJECT

public:
    explicit TPEditorTextBinding(TPScriptText *text, QObject *parent = nullptr);

    // Shows the text in `document` and follows its edits from then on. The document's own
    // undo is switched off: the editor keeps an exact history of its own. When the document
    // belongs to a Qt Quick text item, pass the item: a whole text is then set through its
    // "text" property, since a text item whose document was replaced behind its back
    // rebuilds far more of its scene on every later keystroke.
    void bind(QTextDocument *document, QObject *textItem = nullptr);
    QTextDocument *document() const { return m_document; }
    enum class Reload {
        Changed, // the text was replaced in code
        Redraw,  // the same text, drawn anew from scratch
    };
    // Shows the whole text again.
    void reload(Reload why = Reload::Changed);

    // Applies changes to the text and the document together; returns them as made.
    QList<TPTextEdit> apply(const QList<TPTextEdit> &edits);

    // Between text offsets and document positions.
    int documentPosition(qsizetype offset) const;
    qsizetype offsetAt(int documentPosition) const;

signals:
    // A change typed or pasted into the document, as made to the text.
    void documentEdited(const TPTextEdit &edit);

private:
    void onContentsChange(int position, int removed, int added);
    // Replaces the selection with `shown`, touching only the characters that differ.
    static void replaceSelectionMinimally(QTextCursor &cursor, const QString &shown);

    TPScriptText *m_text;
    QPointer<QTextDocument> m_document;
    // The view's text item, when the document is its: whole texts are given to it.
    QPointer<QObject> m_textItem;
    // Set while the binding itself changes the document, whose reports are then ignored.
    bool m_applying = false;
};
