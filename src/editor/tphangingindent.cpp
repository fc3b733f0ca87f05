#include "editor/tphangingindent.h"

#include <QAbstractTextDocumentLayout>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextLayout>

#include <cmath>

namespace {

bool sameWidth(qreal a, qreal b)
{
    return std::abs(a - b) < 0.01;
}

} // namespace

TPHangingIndent::TPHangingIndent(QObject *parent) : QObject(parent)
{
    m_pass.setSingleShot(true);
    m_pass.setInterval(0);
    connect(&m_pass, &QTimer::timeout, this, &TPHangingIndent::indentPending);
}

void TPHangingIndent::setDocument(QTextDocument *document)
{
    if (m_document)
        disconnect(m_document, nullptr, this, nullptr);
    m_document = document;
    if (document) {
        connect(document, &QTextDocument::contentsChange, this, &TPHangingIndent::noteChange);
        // A narrower text wraps lines that fitted before: they need their hang too.
        m_textWidth = document->textWidth();
        connect(document->documentLayout(), &QAbstractTextDocumentLayout::documentSizeChanged, this,
                [this] {
                    if (m_document && !sameWidth(m_document->textWidth(), m_textWidth)) {
                        m_textWidth = m_document->textWidth();
                        markAll();
                    }
                });
    }
    markAll();
}

void TPHangingIndent::setMetrics(qreal spaceWidth, int indentColumns)
{
    if (sameWidth(spaceWidth, m_spaceWidth) && indentColumns == m_indentColumns)
        return;
    m_spaceWidth = spaceWidth;
    m_indentColumns = std::max(indentColumns, 1);
    markAll();
}

void TPHangingIndent::setEnabled(bool enabled)
{
    if (enabled == m_enabled)
        return;
    m_enabled = enabled;
    markAll();
}

qreal TPHangingIndent::hangFor(const QString &line) const
{
    if (!m_enabled)
        return 0;
    int columns = 0;
    for (const QChar c : line) {
        if (c == u' ')
            ++columns;
        else if (c == u'\t')
            columns = (columns / m_indentColumns + 1) * m_indentColumns;
        else
            break;
    }
    return (columns + m_indentColumns) * m_spaceWidth;
}

void TPHangingIndent::noteChange(int position, int, int added)
{
    if (m_applying)
        return;
    const int end = position + added;
    m_pendingFrom = m_pendingFrom < 0 ? position : std::min(m_pendingFrom, position);
    m_pendingTo = std::max(m_pendingTo, end);
    m_pass.start();
}

void TPHangingIndent::markAll()
{
    if (!m_document)
        return;
    m_pendingFrom = 0;
    m_pendingTo = m_document->characterCount();
    m_pass.start();
}

void TPHangingIndent::indentPending()
{
    if (!m_document || m_pendingFrom < 0)
        return;
    QTextBlock block = m_document->findBlock(std::min(m_pendingFrom, m_pendingTo));
    const QTextBlock last = m_document->findBlock(m_pendingTo);
    m_pendingFrom = m_pendingTo = -1;
    if (!m_enabled)
        return;
    QTextCursor cursor(m_document);
    m_applying = true;
    cursor.beginEditBlock();
    for (; block.isValid(); block = block.next()) {
        // Only a line drawn on more than one row has a rest to hang; on one that fits, a
        // hang changes nothing, so it is left as it is.
        const QTextLayout *layout = block.layout();
        if (layout && layout->lineCount() > 1) {
            const qreal hang = hangFor(block.text());
            const QTextBlockFormat current = block.blockFormat();
            if (!sameWidth(current.leftMargin(), hang) || !sameWidth(current.textIndent(), -hang)) {
                // The first row starts at the margin: the hang is a left margin that the
                // first row's negative indent takes back.
                QTextBlockFormat format = current;
                format.setLeftMargin(hang);
                format.setTextIndent(-hang);
                cursor.setPosition(block.position());
                cursor.setBlockFormat(format);
            }
        }
        if (block == last)
            break;
    }
    cursor.endEditBlock();
    m_applying = false;
}
