#include "editor/tpeditortextbinding.h"

#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QQuickItem>
#include <QQuickTextDocument>
#include <QTextBlock>
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

// Characters a code editor types with its own rules (a pair, or a step over the closing one).
bool isPairCharacter(QChar c)
{
    return QStringView(u"()[]{}\"'").contains(c);
}

} // namespace

TPEditorTextBinding::TPEditorTextBinding(TPEditBuffer *buffer, QObject *parent)
    : QObject(parent), m_buffer(buffer)
{}

TPEditorTextBinding::~TPEditorTextBinding()
{
    if (m_textItem)
        m_textItem->removeEventFilter(this);
    m_buffer->attachView(nullptr);
}

void TPEditorTextBinding::bindItem(QQuickItem *textItem)
{
    auto *quickDocument =
        textItem ? textItem->property("textDocument").value<QQuickTextDocument *>() : nullptr;
    if (!quickDocument)
        return;
    attach(quickDocument->textDocument(), textItem);
    textItem->installEventFilter(this);
    // A Qt Quick text item (Qt 6.4) lays its document out again when its wrapping changes,
    // but tells nothing to the part that draws it, which keeps the lines as they were.
    connect(textItem, SIGNAL(wrapModeChanged()), this, SLOT(redraw()));
}

void TPEditorTextBinding::bindDocument(QTextDocument *document)
{
    attach(document, nullptr);
}

void TPEditorTextBinding::attach(QTextDocument *document, QQuickItem *textItem)
{
    if (m_document)
        disconnect(m_document, nullptr, this, nullptr);
    if (m_textItem) {
        m_textItem->removeEventFilter(this);
        disconnect(m_textItem, nullptr, this, nullptr);
    }
    m_document = document;
    m_textItem = textItem;
    m_bareSelection = QTextCursor(document);
    if (!m_document) {
        m_buffer->attachView(nullptr);
        return;
    }
    m_document->setUndoRedoEnabled(false);
    // Connected before anything else that reacts to the document's changes (the colouring),
    // so this sees a change before any formatting it causes.
    connect(m_document, &QTextDocument::contentsChange, this,
            &TPEditorTextBinding::onContentsChange);
    m_buffer->attachView(this);
}

void TPEditorTextBinding::showWholeText()
{
    reload(Reload::Changed);
}

void TPEditorTextBinding::redraw()
{
    const auto [anchor, cursor] = selection();
    emit redrawing();
    reload(Reload::Redraw);
    select(anchor, cursor);
}

void TPEditorTextBinding::reload(Reload why)
{
    if (!m_document)
        return;
    ApplyingScope applying(m_applying);
    const QString shown = m_buffer->script().documentText();
    if (m_textItem) {
        // A text item ignores being given the text it holds.
        if (why == Reload::Redraw)
            m_textItem->setProperty("text", QString());
        m_textItem->setProperty("text", shown);
    } else {
        m_document->setPlainText(shown);
    }
}

int TPEditorTextBinding::documentPosition(qsizetype offset) const
{
    const TPScriptText &text = m_buffer->script();
    const int line = text.lineAt(offset);
    const qsizetype column = std::min(offset, text.lineEnd(line)) - text.lineStart(line);
    const QTextBlock block = m_document ? m_document->findBlockByNumber(line) : QTextBlock();
    return block.isValid() ? block.position() + int(column) : 0;
}

qsizetype TPEditorTextBinding::offsetAt(int documentPosition) const
{
    const TPScriptText &text = m_buffer->script();
    if (!m_document)
        return 0;
    const QTextBlock block = m_document->findBlock(documentPosition);
    if (!block.isValid())
        return text.text().size();
    const int line = block.blockNumber();
    return std::min(text.lineStart(line) + (documentPosition - block.position()),
                    text.lineEnd(line));
}

void TPEditorTextBinding::beginChanges()
{
    m_applying = true;
    m_changes = QTextCursor(m_document);
    m_changes.beginEditBlock();
}

void TPEditorTextBinding::endChanges()
{
    m_changes.endEditBlock();
    m_changes = QTextCursor();
    m_applying = false;
}

void TPEditorTextBinding::replaceLines(int first, int lastBefore, int lastAfter)
{
    const TPScriptText &text = m_buffer->script();
    const QTextBlock firstBlock = m_document->findBlockByNumber(first);
    const QTextBlock lastBlock = m_document->findBlockByNumber(lastBefore);
    m_changes.setPosition(firstBlock.position());
    m_changes.setPosition(lastBlock.position() + lastBlock.length() - 1, QTextCursor::KeepAnchor);
    QString shown;
    for (int line = first; line <= lastAfter; ++line) {
        if (line > first)
            shown.append(QChar::ParagraphSeparator);
        shown.append(text.lineText(line));
    }
    replaceSelectionMinimally(m_changes, shown);
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

std::pair<qsizetype, qsizetype> TPEditorTextBinding::selection() const
{
    int anchor = 0;
    int position = 0;
    if (m_textItem) {
        position = m_textItem->property("cursorPosition").toInt();
        const int start = m_textItem->property("selectionStart").toInt();
        const int end = m_textItem->property("selectionEnd").toInt();
        anchor = position == start ? end : start;
    } else {
        anchor = m_bareSelection.anchor();
        position = m_bareSelection.position();
    }
    return {offsetAt(anchor), offsetAt(position)};
}

void TPEditorTextBinding::select(qsizetype anchor, qsizetype cursor)
{
    const int from = documentPosition(anchor);
    const int to = documentPosition(cursor);
    if (m_textItem) {
        if (from == to)
            m_textItem->setProperty("cursorPosition", to);
        else
            QMetaObject::invokeMethod(m_textItem, "select", Q_ARG(int, from), Q_ARG(int, to));
    } else if (!m_bareSelection.isNull()) {
        m_bareSelection.setPosition(from);
        m_bareSelection.setPosition(to, QTextCursor::KeepAnchor);
    }
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
    m_buffer->recordShownChange(block.blockNumber(), position - block.position(), removed,
                                cursor.selectedText());
}

bool TPEditorTextBinding::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != m_textItem)
        return false;
    if (event->type() == QEvent::KeyPress)
        return handleKey(static_cast<QKeyEvent *>(event));
    if (event->type() == QEvent::InputMethod) {
        // A phone keyboard commits characters as input-method text, not as keys.
        auto *input = static_cast<QInputMethodEvent *>(event);
        const QString commit = input->commitString();
        if (!input->preeditString().isEmpty() || input->replacementLength() != 0 ||
            commit.size() != 1)
            return false;
        if (commit == QLatin1String("\n")) {
            m_buffer->newLine();
            return true;
        }
        if (isPairCharacter(commit.at(0))) {
            m_buffer->typeCharacter(commit.at(0));
            return true;
        }
    }
    return false;
}

bool TPEditorTextBinding::handleKey(QKeyEvent *event)
{
    if (m_keyInterceptor &&
        m_keyInterceptor(event->key(), event->modifiers() & ~Qt::KeypadModifier))
        return true;
    if (event->matches(QKeySequence::Undo)) {
        m_buffer->undo();
        return true;
    }
    if (event->matches(QKeySequence::Redo)) {
        m_buffer->redo();
        return true;
    }
    const Qt::KeyboardModifiers modifiers = event->modifiers() & ~Qt::KeypadModifier;
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (modifiers != Qt::NoModifier)
            return false;
        m_buffer->newLine();
        return true;
    case Qt::Key_Tab:
        m_buffer->insertIndent();
        m_buffer->closeRun();
        return true;
    case Qt::Key_Backtab:
        m_buffer->outdent();
        return true;
    case Qt::Key_Backspace:
        return modifiers == Qt::NoModifier && m_buffer->backspaceEmptyPair();
    default:
        break;
    }
    const QString text = event->text();
    if (text.size() == 1 && isPairCharacter(text.at(0)) &&
        !(modifiers & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier))) {
        m_buffer->typeCharacter(text.at(0));
        return true;
    }
    return false;
}
