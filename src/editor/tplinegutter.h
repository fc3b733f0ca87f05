#pragma once

#include <QColor>
#include <QFont>
#include <QPointer>
#include <QPolygonF>
#include <QQuickPaintedItem>
#include <QtQml/qqmlregistration.h>

class QTextDocument;

// The line numbers beside the editor's text. It reads where each line starts from the text
// item's document layout, so a wrapped line keeps one number at its first row. It paints
// only the lines in sight: `contentY` is how far the text is scrolled, `textTopPadding`
// where the text starts inside its item.
class TPLineGutter : public QQuickPaintedItem
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QQuickItem *textItem READ textItem WRITE setTextItem NOTIFY textItemChanged)
    Q_PROPERTY(qreal contentY READ contentY WRITE setContentY NOTIFY geometryInputsChanged)
    Q_PROPERTY(qreal textTopPadding MEMBER m_textTopPadding NOTIFY geometryInputsChanged)
    Q_PROPERTY(int errorLine MEMBER m_errorLine NOTIFY geometryInputsChanged)
    Q_PROPERTY(QFont font MEMBER m_font NOTIFY geometryInputsChanged)
    Q_PROPERTY(QColor numberColor MEMBER m_numberColor NOTIFY geometryInputsChanged)
    Q_PROPERTY(QColor currentNumberColor MEMBER m_currentNumberColor NOTIFY geometryInputsChanged)
    Q_PROPERTY(QColor errorColor MEMBER m_errorColor NOTIFY geometryInputsChanged)
    // Lines with a lint warning: a triangle in the dot's column, unlike the error's dot.
    Q_PROPERTY(QList<int> warningLines MEMBER m_warningLines NOTIFY geometryInputsChanged)
    Q_PROPERTY(QColor warningColor MEMBER m_warningColor NOTIFY geometryInputsChanged)

public:
    explicit TPLineGutter(QQuickItem *parent = nullptr);

    QQuickItem *textItem() const { return m_textItem; }
    void setTextItem(QQuickItem *item);
    qreal contentY() const { return m_contentY; }
    void setContentY(qreal y);

    // The 1-based line numbers in sight and where each is drawn, top to bottom.
    QList<std::pair<int, qreal>> visibleNumbers() const;
    // Where the error dot of the line drawn at `y` goes: in a column of its own, left of
    // every number the gutter is wide enough for.
    QRectF dotRect(qreal y) const;
    // The warning triangle of the line drawn at `y`, pointing up, in the dot's box.
    QPolygonF warningMark(qreal y) const;
    // The box the digits of `number` take when drawn at `y`, right-aligned.
    QRectF numberRect(int number, qreal y) const;

    void paint(QPainter *painter) override;

signals:
    void textItemChanged();
    void geometryInputsChanged();

private:
    QTextDocument *document() const;
    void updateWidth();
    void updateCurrentLine();

    QPointer<QQuickItem> m_textItem;
    qreal m_contentY = 0;
    qreal m_textTopPadding = 0;
    int m_errorLine = 0;
    // The 1-based line that holds the text item's cursor; its number is drawn stronger.
    int m_currentLine = 1;
    int m_digits = 0;
    QFont m_font;
    QColor m_numberColor = Qt::gray;
    QColor m_currentNumberColor = Qt::black;
    QColor m_errorColor = Qt::red;
    QList<int> m_warningLines;
    QColor m_warningColor = QColor(0xA0, 0x5A, 0x00);
};
