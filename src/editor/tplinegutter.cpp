#include "editor/tplinegutter.h"

#include <QAbstractTextDocumentLayout>
#include <QFontMetricsF>
#include <QPainter>
#include <QQuickTextDocument>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextLayout>

namespace {

constexpr qreal kSidePadding = 6;
// The error dot's size, as a share of a line's height, and its gap to the numbers.
constexpr qreal kDotShare = 0.4;
constexpr qreal kDotGap = 2;

} // namespace

TPLineGutter::TPLineGutter(QQuickItem *parent) : QQuickPaintedItem(parent)
{
    connect(this, &TPLineGutter::geometryInputsChanged, this, [this] {
        updateWidth();
        update();
    });
}

QTextDocument *TPLineGutter::document() const
{
    auto *quickDocument =
        m_textItem ? m_textItem->property("textDocument").value<QQuickTextDocument *>() : nullptr;
    return quickDocument ? quickDocument->textDocument() : nullptr;
}

void TPLineGutter::setTextItem(QQuickItem *item)
{
    if (m_textItem == item)
        return;
    if (m_textItem)
        disconnect(m_textItem, nullptr, this, nullptr);
    m_textItem = item;
    if (QTextDocument *doc = document()) {
        // Any relayout of the text can move the lines in sight.
        connect(doc->documentLayout(), &QAbstractTextDocumentLayout::update, this,
                [this] { update(); });
        connect(doc, &QTextDocument::blockCountChanged, this, [this] {
            updateWidth();
            updateCurrentLine();
        });
        connect(m_textItem, &QQuickItem::widthChanged, this, [this] { update(); });
        connect(m_textItem, SIGNAL(cursorPositionChanged()), this, SIGNAL(geometryInputsChanged()));
    }
    updateWidth();
    emit textItemChanged();
}

void TPLineGutter::setContentY(qreal y)
{
    if (qFuzzyCompare(m_contentY, y))
        return;
    m_contentY = y;
    emit geometryInputsChanged();
}

void TPLineGutter::updateWidth()
{
    updateCurrentLine();
    const QTextDocument *doc = document();
    const int digits = int(QString::number(doc ? doc->blockCount() : 1).size());
    if (digits == m_digits && implicitWidth() > 0)
        return;
    m_digits = std::max(digits, 2);
    const QFontMetricsF metrics(m_font);
    // The numbers' widest, then a column for the error dot, so that the dot never covers a
    // digit.
    setImplicitWidth(std::ceil(metrics.horizontalAdvance(QString(m_digits, u'9')) +
                               2 * kSidePadding + metrics.height() * kDotShare + kDotGap));
}

void TPLineGutter::updateCurrentLine()
{
    const QTextDocument *doc = document();
    const int position = m_textItem ? m_textItem->property("cursorPosition").toInt() : 0;
    const int line = doc ? doc->findBlock(position).blockNumber() + 1 : 1;
    if (line > 0)
        m_currentLine = line;
}

QList<std::pair<int, qreal>> TPLineGutter::visibleNumbers() const
{
    QList<std::pair<int, qreal>> numbers;
    QTextDocument *doc = document();
    if (!doc)
        return numbers;
    QAbstractTextDocumentLayout *layout = doc->documentLayout();
    const qreal top = m_contentY - m_textTopPadding;
    const int firstPosition = layout->hitTest(QPointF(0, std::max<qreal>(top, 0)), Qt::FuzzyHit);
    for (QTextBlock block = doc->findBlock(std::max(firstPosition, 0)); block.isValid();
         block = block.next()) {
        const QRectF rect = layout->blockBoundingRect(block);
        const qreal y = rect.top() - top;
        if (y > height())
            break;
        const QTextLayout *lines = block.layout();
        const qreal firstLineTop = lines && lines->lineCount() > 0 ? lines->lineAt(0).y() : 0;
        if (y + rect.height() >= 0)
            numbers.append({block.blockNumber() + 1, y + firstLineTop});
    }
    return numbers;
}

QRectF TPLineGutter::dotRect(qreal y) const
{
    const qreal lineHeight = QFontMetricsF(m_font).height();
    const qreal size = lineHeight * kDotShare;
    return QRectF(kSidePadding / 2, y + (lineHeight - size) / 2, size, size);
}

QPolygonF TPLineGutter::warningMark(qreal y) const
{
    const QRectF box = dotRect(y);
    return QPolygonF({QPointF(box.center().x(), box.top()), box.bottomRight(), box.bottomLeft()});
}

QRectF TPLineGutter::numberRect(int number, qreal y) const
{
    const QFontMetricsF metrics(m_font);
    const qreal digits = metrics.horizontalAdvance(QString::number(number));
    const qreal right = width() - kSidePadding;
    return QRectF(right - digits, y, digits, metrics.height());
}

void TPLineGutter::paint(QPainter *painter)
{
    painter->setFont(m_font);
    for (const auto &[number, y] : visibleNumbers()) {
        if (number == m_errorLine) {
            painter->setPen(Qt::NoPen);
            painter->setBrush(m_errorColor);
            painter->drawEllipse(dotRect(y));
        } else if (m_warningLines.contains(number)) {
            painter->setPen(Qt::NoPen);
            painter->setBrush(m_warningColor);
            painter->drawPolygon(warningMark(y));
        }
        painter->setPen(number == m_errorLine     ? m_errorColor
                        : number == m_currentLine ? m_currentNumberColor
                                                  : m_numberColor);
        painter->drawText(numberRect(number, y), Qt::AlignRight | Qt::AlignTop,
                          QString::number(number));
    }
}
