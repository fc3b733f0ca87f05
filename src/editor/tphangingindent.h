#pragma once

#include <QObject>
#include <QPointer>
#include <QTimer>

class QTextBlock;
class QTextDocument;

// Draws the wrapped rest of each line indented to the line's own indent plus one step (a
// hanging indent), as code editors do, so that a wrapped comment never looks like a line of
// its own. Only the document's block formats change, never its text: the first row of each
// line starts where it did, and the gutter still has one number per line. Only lines drawn
// on more than one row are given a hang. Lines that change, and all lines when the text's
// width changes, are indented again once the change is done, all in one edit, since every
// edit lays out and draws again all the lines below it.
class TPHangingIndent : public QObject
{
    Q_OBJECT

public:
    explicit TPHangingIndent(QObject *parent = nullptr);

    void setDocument(QTextDocument *document);
    // The width of a space in the text's font, and one indent step in columns; tabs reach
    // the next step.
    void setMetrics(qreal spaceWidth, int indentColumns);
    // Off while lines do not wrap: nothing hangs then.
    void setEnabled(bool enabled);

private:
    // The x at which the rows after a line's first start, for the line's text.
    qreal hangFor(const QString &line) const;
    void noteChange(int position, int removed, int added);
    void markAll();
    void indentPending();

    QPointer<QTextDocument> m_document;
    qreal m_spaceWidth = 0;
    int m_indentColumns = 4;
    bool m_enabled = true;
    // The width the lines were last wrapped at.
    qreal m_textWidth = 0;
    // The document positions still to be indented, and whether a change is this class's own.
    int m_pendingFrom = -1;
    int m_pendingTo = -1;
    bool m_applying = false;
    // Changed lines are indented once the change is done, all in one edit.
    QTimer m_pass;
};
