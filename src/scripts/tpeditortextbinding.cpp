#include "tpeditortextbinding.h"

#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>

#include <utility>

namespace {

// Marks the binding as the author of the document's changes for as long as it lives.
class ApplyingScope
{
public:
    explicit ApplyingScope(bool &flag) : m_flag(flag), m_was(std::exchange(flag, true)) {}
    ~ApplyingScope() { m_flag = m_was; }
    ApplyingScope(const ApplyingScope &) = delete;
    ApplyingScope &operator=(const ApplyingScope &) = delete;

private:
    bool &m_flag;
    bool m_was;
};

} // namespace

TPEditorTextBinding::TPEditorTextBinding(TPScriptText *text, QObject *parent)
    : QObject(parent), m_text(text)
{}

void TPEditorTextBinding::bind(QTextDocument *document, QObject *textItem)
{
    if (m_document)
        disconnect(m_document, nullptr, this, nullptr);
    m_document = document;
    m_textItem = textItem;
    if (!m_document)
        return;
    m_document->setUndoRedoEnabled(false);
    // Connected before anything else that reacts to the document's changes (the colouring),
    // so this sees a change before any formatting it causes.
    connect(m_document, &QTextDocument::contentsChange, this,
            &TPEditorTextBinding::onContentsChange);
    reload();
}

void TPEditorTextBinding::reload(Reload why)
{
    if (!m_document)
        return;
    ApplyingScope applying(m_applying);
    // A text item ignores being given the text it holds.
    if (m_textItem && why == Reload::Redraw)
        m_textItem->setProperty("text", QString());
    if (m_textItem)
        m_textItem->setProperty("text", m_text->documentText());
    else
        m_document->setPlainText(m_text->documentText());
}

int TPEditorTextBinding::documentPosition(qsizetype offset) const
{
    const int line = m_text->lineAt(offset);
    const qsizetype column = std::min(offset, m_text->lineEnd(line)) - m_text->lineStart(line);
    const QTextBlock block = m_document ? m_document->findBlockByNumber(line) : QTextBlock();
    return block.isValid() ? block.position() + int(column) : 0;
}

qsizetype TPEditorTextBinding::offsetAt(int documentPosition) const
{
    if (!m_document)
        return 0;
    const QTextBlock block = m_document->findBlock(documentPosition);
    if (!block.isValid())
        return m_text->text().size();
    const int line = block.blockNumber();
    return std::min(m_text->lineStart(line) + (documentPosition - block.position()),
                    m_text->lineEnd(line));
}

QList<TPTextEdit> TPEditorTextBinding::apply(const QList<TPTextEdit> &edits)
{
    QList<TPTextEdit> made;
    ApplyingScope applying(m_applying);
    QTextCursor cursor = m_document ? QTextCursor(m_document) : QTextCursor();
    if (m_document)
        cursor.beginEditBlock();
    for (const TPTextEdit &edit : edits) {
        const TPTextEdit change = m_text->widened(edit.offset, edit.removed.size(), edit.inserted);
        if (change.removed == change.inserted)
            continue;
        // The lines the change touches, and one more on each side, where a CR and an LF may
        // join into one line break or come apart.
        const int firstLine = std::max(m_text->lineAt(change.offset) - 1, 0);
        const int lastLine = std::min(m_text->lineAt(change.offset + change.removed.size()) + 1,
                                      m_text->lineCount() - 1);
        const int linesAfter = m_text->lineCount() - 1 - lastLine;
        made.append(m_text->apply(change));
        if (!m_document)
            continue;
        const QTextBlock first = m_document->findBlockByNumber(firstLine);
        const QTextBlock last = m_document->findBlockByNumber(lastLine);
        cursor.setPosition(first.position());
        cursor.setPosition(last.position() + last.length() - 1, QTextCursor::KeepAnchor);
        QString shown;
        for (int line = firstLine; line < m_text->lineCount() - linesAfter; ++line) {
            if (line > firstLine)
                shown.append(QChar::ParagraphSeparator);
            shown.append(m_text->lineText(line));
        }
        replaceSelectionMinimally(cursor, shown);
    }
    if (m_document)
        cursor.endEditBlock();
    return made;
}

void TPEditorTextBinding::replaceSelectionMinimally(QTextCursor &cursor, const QString &shown)
{
    const QString old = cursor.selectedText();
    const int start = cursor.selectionStart();
    qsizetype prefix = 0;
    const qsizetype common = std::min(old.size(), shown.size());
    while (prefix < common && old.at(prefix) == shown.at(prefix))
        ++prefix;
    qsizetype suffix = 0;
    while (suffix < common - prefix &&
           old.at(old.size() - 1 - suffix) == shown.at(shown.size() - 1 - suffix))
        ++suffix;
    cursor.setPosition(start + int(prefix));
    cursor.setPosition(start + int(old.size() - suffix), QTextCursor::KeepAnchor);
    cursor.insertText(shown.mid(prefix, shown.size() - prefix - suffix));
}

void TPEditorTextBinding::onContentsChange(int position, int removed, int added)
{
    if (m_applying || !m_document)
        return;
    const QTextBlock block = m_document->findBlock(position);
    if (!block.isValid())
        return;
    QTextCursor cursor(m_document);
    cursor.setPosition(position);
    cursor.setPosition(std::min(position + added, m_document->characterCount() - 1),
                       QTextCursor::KeepAnchor);
    const TPTextEdit edit = m_text->applyDocumentChange(
        block.blockNumber(), position - block.position(), removed, cursor.selectedText());
    if (!edit.isNull())
        emit documentEdited(edit);
}
