#include "editor/tpcodeeditor.h"

#include "editing/tpluaoutline.h"
#include "foundation/tplang.h"
#include "platform/tptheme.h"

#include <QAbstractTextDocumentLayout>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextLayout>

namespace {

// The symbol row's keys that act on lines rather than type.
const QString kTabKey = QStringLiteral("Tab");
const QString kIndentKey = QStringLiteral("Indent");
const QString kOutdentKey = QStringLiteral("Outdent");

} // namespace

TPCodeEditor::TPCodeEditor(const QString &chunkName, QObject *parent)
    : QObject(parent), m_binding(&m_buffer), m_find(&m_buffer), m_completer(&m_buffer),
      m_checker(new TPLuaSyntaxChecker(
          chunkName, [this] { return text(); }, this))
{
    connect(&m_buffer, &TPEditBuffer::edited, m_checker, &TPLuaSyntaxChecker::textChanged);
    connect(&m_buffer, &TPEditBuffer::edited, this, &TPCodeEditor::edited);
    // Candidates follow typing, once the view has moved its cursor past what was typed.
    connect(&m_buffer, &TPEditBuffer::typed, &m_completer, &TPCompleter::refresh,
            Qt::QueuedConnection);
    m_binding.setKeyInterceptor([this](int key, Qt::KeyboardModifiers modifiers) {
        return m_completer.pressKey(key, modifiers);
    });
    connect(&m_buffer, &TPEditBuffer::historyChanged, this, &TPCodeEditor::historyChanged);
    connect(&m_buffer, &TPEditBuffer::selectionMoved, this, &TPCodeEditor::cursorMoved);
    connect(&m_buffer, &TPEditBuffer::lineJumped, this, &TPCodeEditor::lineJumped);
    connect(&m_buffer, &TPEditBuffer::indentChanged, this, &TPCodeEditor::indentChanged);
    connect(m_checker, &TPLuaSyntaxChecker::checked, this,
            [this] { m_lint.setResult(m_checker->lint()); });
    connect(m_checker, &TPLuaSyntaxChecker::checked, this, &TPCodeEditor::syntaxChecked);
    // A redrawn text is coloured from the top again.
    connect(&m_binding, &TPEditorTextBinding::redrawing, this, [this] {
        if (m_highlighter)
            m_highlighter->colourFromTop();
    });
    // The colours follow the light or dark appearance.
    connect(TPTheme::shared(), &TPTheme::paletteChanged, this, &TPCodeEditor::applySyntaxColors);
    connect(&m_find, &TPFindReplace::matchesChanged, this, &TPCodeEditor::markMatches);
    connect(&m_find, &TPFindReplace::replacedAll, this,
            [this](int count) { setFindNote(TPL("find_replaced_count").arg(count)); });
    connect(&m_find, &TPFindReplace::queryChanged, this, [this] { setFindNote(QString()); });
    connect(&m_buffer, &TPEditBuffer::typed, this, [this] { setFindNote(QString()); });
    connect(&m_buffer, &TPEditBuffer::indentChanged, this,
            [this] { m_hangingIndent.setMetrics(m_spaceWidth, m_buffer.indentColumns()); });
}

void TPCodeEditor::setText(const QString &text)
{
    if (m_highlighter)
        m_highlighter->colourFromTop();
    m_buffer.setText(text);
}

void TPCodeEditor::attachView(QQuickItem *textItem)
{
    m_binding.bindItem(textItem);
    colourDocument();
    m_hangingIndent.setDocument(m_binding.document());
}

void TPCodeEditor::setLineLayout(bool wrap, qreal spaceWidth)
{
    m_spaceWidth = spaceWidth;
    m_hangingIndent.setEnabled(wrap);
    m_hangingIndent.setMetrics(spaceWidth, m_buffer.indentColumns());
}

qreal TPCodeEditor::wholeRowContentY(qreal contentY, qreal topPadding) const
{
    QTextDocument *document = m_binding.document();
    if (!document || contentY <= topPadding)
        return contentY;
    const QPointF at(0, contentY - topPadding);
    const int position = document->documentLayout()->hitTest(at, Qt::FuzzyHit);
    const QTextBlock block = document->findBlock(position);
    QTextLayout *layout = block.isValid() ? block.layout() : nullptr;
    if (!layout)
        return contentY;
    const QTextLine row = layout->lineForTextPosition(position - block.position());
    if (!row.isValid())
        return contentY;
    const qreal rowTop = document->documentLayout()->blockBoundingRect(block).top() + row.y();
    return std::min(contentY, rowTop + topPadding);
}

void TPCodeEditor::setFindOpen(bool open)
{
    if (open == m_findOpen)
        return;
    m_findOpen = open;
    if (!open)
        setFindNote(QString());
    emit findOpenChanged();
    markMatches();
}

void TPCodeEditor::setFindNote(const QString &note)
{
    if (note == m_findNote)
        return;
    m_findNote = note;
    emit findNoteChanged();
}

void TPCodeEditor::markMatches()
{
    if (!m_highlighter)
        return;
    TPLuaHighlighter::LineMarks marks;
    if (m_findOpen) {
        const TPScriptText &text = m_buffer.script();
        // A match across lines marks its part of each line it touches.
        for (const auto &[offset, length] : m_find.matches()) {
            qsizetype from = offset;
            const qsizetype end = offset + length;
            for (int line = text.lineAt(offset); from < end && line < text.lineCount(); ++line) {
                const qsizetype start = text.lineStart(line);
                const qsizetype lineEnd = text.lineEnd(line);
                const qsizetype to = std::min(end, lineEnd);
                if (to > from)
                    marks[line].append({int(from - start), int(to - from)});
                if (line + 1 < text.lineCount())
                    from = std::max(from, text.lineStart(line + 1));
            }
        }
    }
    m_highlighter->setMarks(marks, TPTheme::shared()->findMatch());
}

void TPCodeEditor::attachDocument(QTextDocument *document)
{
    m_binding.bindDocument(document);
    colourDocument();
}

void TPCodeEditor::colourDocument()
{
    // The binding connects to the document first: it must see a change before the colouring
    // reacts to it.
    delete m_highlighter;
    if (QTextDocument *document = m_binding.document()) {
        m_highlighter = new TPLuaHighlighter(document);
        applySyntaxColors();
    }
}

void TPCodeEditor::applySyntaxColors()
{
    if (!m_highlighter)
        return;
    const TPTheme::SyntaxColors &colors = TPTheme::shared()->syntaxColors();
    m_highlighter->setColor(TPLuaHighlighter::Keyword, colors.keyword);
    m_highlighter->setColor(TPLuaHighlighter::String, colors.string);
    m_highlighter->setColor(TPLuaHighlighter::Comment, colors.comment);
    m_highlighter->setColor(TPLuaHighlighter::Number, colors.number);
    m_highlighter->setColor(TPLuaHighlighter::FunctionName, colors.functionName);
    markMatches();
}

QStringList TPCodeEditor::symbolKeys() const
{
    QStringList keys;
    for (const QChar symbol : QStringView(u"()[]{}\"'=.,:;#-+*/<>~_"))
        keys.append(symbol);
    keys << kTabKey << kIndentKey << kOutdentKey;
    return keys;
}

void TPCodeEditor::pressSymbolKey(const QString &key)
{
    if (key == kTabKey)
        m_buffer.insertIndent();
    else if (key == kIndentKey)
        m_buffer.indent();
    else if (key == kOutdentKey)
        m_buffer.outdent();
    else if (key.size() == 1)
        m_buffer.typeCharacter(key.at(0));
    m_buffer.closeRun();
}

void TPCodeEditor::goToSyntaxError()
{
    if (syntaxErrorLine() > 0)
        m_buffer.goToLine(syntaxErrorLine());
}

void TPCodeEditor::refreshOutline()
{
    QList<TPTitledRowsModel::Row> rows;
    m_outlineLines.clear();
    for (const TPLuaOutline::Entry &entry : TPLuaOutline::functions(m_buffer.script())) {
        rows.append({entry.name, TPL("editor_outline_line").arg(entry.line)});
        m_outlineLines.append(entry.line);
    }
    m_outline.setRows(rows);
}

void TPCodeEditor::setOutlineOpen(bool open)
{
    if (open == m_outlineOpen)
        return;
    if (open)
        refreshOutline();
    m_outlineOpen = open;
    emit outlineOpenChanged();
}

void TPCodeEditor::goToOutlineRow(int row)
{
    if (row >= 0 && row < m_outlineLines.size())
        m_buffer.goToLine(m_outlineLines.at(row));
    setOutlineOpen(false);
}

void TPCodeEditor::goToLintMessage()
{
    if (const int line = m_lint.messageLine(); line > 0)
        m_buffer.goToLine(line);
}

void TPCodeEditor::goToLintRow(int row)
{
    if (const int line = m_lint.lineOfRow(row); line > 0)
        m_buffer.goToLine(line);
    m_lint.setListOpen(false);
}
