#include "editor/tphangingindent.h"

#include <QElapsedTimer>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>

#include <cmath>

namespace {

// A slice's share of a frame at 60 Hz.
constexpr qint64 kSliceMs = 4;

bool sameWidth(qreal a, qreal b)
{
    return std::abs(a - b) < 0.01;
}

} // namespace

TPHangingIndent::TPHangingIndent(QObject *parent) : QObject(parent)
{
    m_slicer.setInterval(0);
    connect(&m_slicer, &QTimer::timeout, this, &TPHangingIndent::indentNextSlice);
}

void TPHangingIndent::setDocument(QTextDocument *document)
{
    if (m_document)
        disconnect(m_document, nullptr, this, nullptr);
    m_document = document;
    if (document)
        connect(document, &QTextDocument::contentsChange, this, &TPHangingIndent::noteChange);
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
    m_slicer.start();
}

void TPHangingIndent::markAll()
{
    if (!m_document)
        return;
    m_pendingFrom = 0;
    m_pendingTo = m_document->characterCount();
    m_slicer.start();
}

void TPHangingIndent::indentNextSlice()
{
    if (!m_document || m_pendingFrom < 0) {
        m_slicer.stop();
        return;
    }
    QElapsedTimer slice;
    slice.start();
    QTextBlock block = m_document->findBlock(std::min(m_pendingFrom, m_pendingTo));
    const QTextBlock last = m_document->findBlock(m_pendingTo);
    QTextCursor cursor(m_document);
    m_applying = true;
    cursor.beginEditBlock();
    // Each line's first row starts at the margin: the hang is a left margin that the first
    // row's negative indent takes back.
    while (block.isValid() && slice.elapsed() < kSliceMs) {
        const qreal hang = hangFor(block.text());
        const QTextBlockFormat current = block.blockFormat();
        if (!sameWidth(current.leftMargin(), hang) || !sameWidth(current.textIndent(), -hang)) {
            QTextBlockFormat format = current;
            format.setLeftMargin(hang);
            format.setTextIndent(-hang);
            cursor.setPosition(block.position());
            cursor.setBlockFormat(format);
        }
        const bool wasLast = block == last;
        block = block.next();
        if (wasLast)
            break;
    }
    cursor.endEditBlock();
    m_applying = false;
    if (!block.isValid() || block.position() > m_pendingTo) {
        m_pendingFrom = m_pendingTo = -1;
        m_slicer.stop();
        return;
    }
    m_pendingFrom = block.position();
}
