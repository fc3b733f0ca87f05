#include "tpcodeeditor.h"

#include "tpcodeeditrules.h"
#include "tpfindreplace.h"
#include "tpluahighlighter.h"
#include "tptheme.h"

#include <QCoreApplication>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QQuickItem>
#include <QQuickTextDocument>
#include <QTextDocument>

namespace {

// The symbol row's keys that act on lines rather than type.
const QString kTabKey = QStringLiteral("Tab");
const QString kIndentKey = QStringLiteral("Indent");
const QString kOutdentKey = QStringLiteral("Outdent");

} // namespace

TPCodeEditor::TPCodeEditor(const QString &chunkName, QObject *parent)
    : QObject(parent), m_binding(&m_text), m_find(new TPFindReplace(this)),
      m_checker(new TPLuaSyntaxChecker(
          chunkName, [this] { return text(); }, this))
{
    connect(&m_binding, &TPEditorTextBinding::documentEdited, this,
            &TPCodeEditor::onDocumentEdited);
    connect(m_checker, &TPLuaSyntaxChecker::checked, this, &TPCodeEditor::syntaxChecked);
    // The colours follow the light or dark appearance.
    connect(TPTheme::shared(), &TPTheme::paletteChanged, this, &TPCodeEditor::applySyntaxColors);
}

TPCodeEditor::~TPCodeEditor()
{
    if (m_view)
        m_view->removeEventFilter(this);
}

int TPCodeEditor::indentColumns() const
{
    return m_indentUnit == QLatin1String("\t") ? 4 : int(m_indentUnit.size());
}

void TPCodeEditor::setText(const QString &text)
{
    m_text.setText(text);
    const QString previousUnit = m_indentUnit;
    m_indentUnit = TPCodeEditRules::indentUnit(m_text);
    if (m_indentUnit != previousUnit)
        emit indentChanged();
    m_history.clear();
    if (m_highlighter)
        m_highlighter->colourFromTop();
    m_binding.reload();
    emit historyChanged();
    afterChange();
}

void TPCodeEditor::attachView(QQuickItem *textItem)
{
    if (m_view)
        m_view->removeEventFilter(this);
    m_view = textItem;
    auto *quickDocument =
        textItem ? textItem->property("textDocument").value<QQuickTextDocument *>() : nullptr;
    if (!quickDocument)
        return;
    textItem->installEventFilter(this);
    attachDocument(quickDocument->textDocument(), textItem);
    // A Qt Quick text item (Qt 6.4) lays its document out again when its wrapping changes,
    // but tells nothing to the part that draws it, which keeps the lines as they were.
    connect(textItem, SIGNAL(wrapModeChanged()), this, SLOT(redrawText()));
}

void TPCodeEditor::redrawText()
{
    const auto [anchor, cursor] = selection();
    if (m_highlighter)
        m_highlighter->colourFromTop();
    m_binding.reload(TPEditorTextBinding::Reload::Redraw);
    select(anchor, cursor);
}

void TPCodeEditor::attachDocument(QTextDocument *document, QObject *textItem)
{
    // The binding connects first: it must see a change before the colouring reacts to it.
    m_binding.bind(document, textItem);
    m_cursor = QTextCursor(document);
    delete m_highlighter;
    m_highlighter = new TPLuaHighlighter(document);
    applySyntaxColors();
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
}

QStringList TPCodeEditor::symbolKeys() const
{
    QStringList keys;
    for (const QChar symbol : QStringView(u"()[]{}\"'=.,:;#-+*/<>~_"))
        keys.append(symbol);
    keys << kTabKey << kIndentKey << kOutdentKey;
    return keys;
}

std::pair<qsizetype, qsizetype> TPCodeEditor::selection() const
{
    int anchor = 0;
    int position = 0;
    if (m_view) {
        position = m_view->property("cursorPosition").toInt();
        const int start = m_view->property("selectionStart").toInt();
        const int end = m_view->property("selectionEnd").toInt();
        anchor = position == start ? end : start;
    } else {
        anchor = m_cursor.anchor();
        position = m_cursor.position();
    }
    return {m_binding.offsetAt(anchor), m_binding.offsetAt(position)};
}

void TPCodeEditor::select(qsizetype anchor, qsizetype cursor)
{
    const int from = m_binding.documentPosition(anchor);
    const int to = m_binding.documentPosition(cursor);
    if (m_view) {
        if (from == to)
            m_view->setProperty("cursorPosition", to);
        else
            QMetaObject::invokeMethod(m_view, "select", Q_ARG(int, from), Q_ARG(int, to));
    } else if (!m_cursor.isNull()) {
        m_cursor.setPosition(from);
        m_cursor.setPosition(to, QTextCursor::KeepAnchor);
    }
    emit cursorMoved();
}

void TPCodeEditor::applyStep(const QList<TPTextEdit> &edits, std::optional<qsizetype> cursorAfter)
{
    const QList<TPTextEdit> made = m_binding.apply(edits);
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

void TPCodeEditor::onDocumentEdited(const TPTextEdit &edit)
{
    m_history.record({edit}, true);
    emit historyChanged();
    afterChange();
    // A closing word typed in the view moves its line back once the view's own change is
    // done.
    if (edit.removed.isEmpty() && edit.inserted.size() == 1)
        QMetaObject::invokeMethod(
            this, [this, after = edit.offset + 1] { outdentClosingAt(after); },
            Qt::QueuedConnection);
}

void TPCodeEditor::outdentClosingAt(qsizetype cursor)
{
    if (cursor > m_text.text().size() || selection() != std::pair(cursor, cursor))
        return;
    if (const auto action = TPCodeEditRules::outdentClosing(m_text, cursor, m_indentUnit))
        applyStep({action->edit}, action->cursor);
}

void TPCodeEditor::afterChange()
{
    m_checker->textChanged();
    emit edited();
}

void TPCodeEditor::undo()
{
    replayHistoryStep(m_history.takeUndo());
}

void TPCodeEditor::redo()
{
    replayHistoryStep(m_history.takeRedo());
}

void TPCodeEditor::replayHistoryStep(const TPEditHistory::Step &step)
{
    if (step.isEmpty())
        return;
    m_binding.apply(step);
    emit historyChanged();
    afterChange();
    const qsizetype end = step.last().offset + step.last().inserted.size();
    select(end, end);
}

void TPCodeEditor::pressSymbolKey(const QString &key)
{
    if (key == kTabKey) {
        const auto [anchor, cursor] = selection();
        applyStep({{std::min(anchor, cursor),
                    m_text.text().mid(std::min(anchor, cursor), std::abs(cursor - anchor)),
                    m_indentUnit}});
    } else if (key == kIndentKey) {
        indent();
    } else if (key == kOutdentKey) {
        outdent();
    } else if (key.size() == 1) {
        typeCharacter(key.at(0));
    }
    m_history.closeRun();
}

void TPCodeEditor::typeCharacter(QChar character)
{
    const auto [anchor, cursor] = selection();
    if (const auto action = TPCodeEditRules::typed(m_text, anchor, cursor, character)) {
        applyStep({action->edit}, action->cursor);
        return;
    }
    const qsizetype from = std::min(anchor, cursor);
    applyStep({{from, m_text.text().mid(from, std::abs(cursor - anchor)), QString(character)}});
    outdentClosingAt(from + 1);
}

void TPCodeEditor::newLine()
{
    const auto [anchor, cursor] = selection();
    const TPCodeEditRules::Action action =
        TPCodeEditRules::newLine(m_text, anchor, cursor, m_indentUnit);
    applyStep({action.edit}, action.cursor);
}

bool TPCodeEditor::backspace()
{
    const auto [anchor, cursor] = selection();
    const auto action = TPCodeEditRules::backspace(m_text, anchor, cursor);
    if (action)
        applyStep({action->edit}, action->cursor);
    return action.has_value();
}

void TPCodeEditor::indent()
{
    const auto [anchor, cursor] = selection();
    applyStep(TPCodeEditRules::indentLines(m_text, anchor, cursor, m_indentUnit),
              cursor + m_indentUnit.size());
}

void TPCodeEditor::outdent()
{
    const auto [anchor, cursor] = selection();
    const int line = m_text.lineAt(cursor);
    const qsizetype before = m_text.lineStart(line);
    const QList<TPTextEdit> edits =
        TPCodeEditRules::outdentLines(m_text, anchor, cursor, m_indentUnit);
    // The cursor keeps its place in its line, less what its own line lost.
    qsizetype removedHere = 0;
    for (const TPTextEdit &edit : edits) {
        if (edit.offset == before)
            removedHere = std::min(edit.removed.size(), cursor - before);
    }
    qsizetype removedBefore = 0;
    for (const TPTextEdit &edit : edits) {
        if (edit.offset < before)
            removedBefore += edit.removed.size();
    }
    applyStep(edits, cursor - removedHere - removedBefore);
}

void TPCodeEditor::goToLine(int line)
{
    const int index = std::clamp(line - 1, 0, m_text.lineCount() - 1);
    select(m_text.lineStart(index), m_text.lineStart(index));
    emit lineJumped();
}

void TPCodeEditor::goToSyntaxError()
{
    if (syntaxErrorLine() > 0)
        goToLine(syntaxErrorLine());
}

void TPCodeEditor::checkSyntaxNow()
{
    m_checker->checkNow();
}

bool TPCodeEditor::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != m_view)
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
            newLine();
            return true;
        }
        if (QStringView(u"()[]{}\"'").contains(commit.at(0))) {
            typeCharacter(commit.at(0));
            return true;
        }
    }
    return false;
}

bool TPCodeEditor::handleKey(QKeyEvent *event)
{
    if (event->matches(QKeySequence::Undo)) {
        undo();
        return true;
    }
    if (event->matches(QKeySequence::Redo)) {
        redo();
        return true;
    }
    const Qt::KeyboardModifiers modifiers = event->modifiers() & ~Qt::KeypadModifier;
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (modifiers != Qt::NoModifier)
            return false;
        newLine();
        return true;
    case Qt::Key_Tab:
        pressSymbolKey(kTabKey);
        return true;
    case Qt::Key_Backtab:
        outdent();
        return true;
    case Qt::Key_Backspace:
        return modifiers == Qt::NoModifier && backspace();
    default:
        break;
    }
    const QString text = event->text();
    if (text.size() == 1 && QStringView(u"()[]{}\"'").contains(text.at(0)) &&
        !(modifiers & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier))) {
        typeCharacter(text.at(0));
        return true;
    }
    return false;
}
