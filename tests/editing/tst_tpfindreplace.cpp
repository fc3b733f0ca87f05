#include "editing/tpeditbuffer.h"
#include "editing/tpfindreplace.h"

#include <QTest>

// Find and replace on an edit buffer alone, with no view.
class TestTPFindReplace : public QObject
{
    Q_OBJECT

    std::unique_ptr<TPEditBuffer> m_buffer;
    std::unique_ptr<TPFindReplace> m_find;

    TPFindReplace *findIn(const QString &text)
    {
        m_find.reset();
        m_buffer = std::make_unique<TPEditBuffer>();
        m_buffer->setText(text);
        m_find = std::make_unique<TPFindReplace>(m_buffer.get());
        return m_find.get();
    }

    QString selected() const
    {
        const auto [anchor, cursor] = m_buffer->selection();
        return m_buffer->text().mid(std::min(anchor, cursor), std::abs(cursor - anchor));
    }

private slots:
    void cleanup()
    {
        m_find.reset();
        m_buffer.reset();
    }

    void plainSearchIgnoresCaseUnlessAsked()
    {
        TPFindReplace *find = findIn(QStringLiteral("Tap tap TAP t.p"));
        find->setQuery(QStringLiteral("tap"));
        QCOMPARE(find->matchCount(), 3);
        find->setCaseSensitive(true);
        QCOMPARE(find->matchCount(), 1);
        find->setQuery(QStringLiteral("t.p"));
        QCOMPARE(find->matchCount(), 1); // the dot is a dot
    }

    void regularExpressionsSearchByPattern()
    {
        TPFindReplace *find = findIn(QStringLiteral("tap(1, 2)\nsleep(300)\ntap(3, 4)"));
        find->setRegularExpression(true);
        find->setQuery(QStringLiteral("\\d+"));
        QCOMPARE(find->matchCount(), 5);
        find->setQuery(QStringLiteral("^tap"));
        QCOMPARE(find->matchCount(), 2);
        find->setQuery(QStringLiteral("("));
        QVERIFY(!find->validQuery());
        QCOMPARE(find->matchCount(), 0);
    }

    void nextAndPreviousWrapAround()
    {
        TPFindReplace *find = findIn(QStringLiteral("a1 a2 a3"));
        find->setQuery(QStringLiteral("a"));
        find->findNext();
        QCOMPARE(find->currentMatch(), 1);
        find->findNext();
        find->findNext();
        QCOMPARE(find->currentMatch(), 3);
        find->findNext();
        QCOMPARE(find->currentMatch(), 1);
        find->findPrevious();
        QCOMPARE(find->currentMatch(), 3);
        QCOMPARE(selected(), QStringLiteral("a"));
    }

    void replaceOneReplacesTheSelectedMatchAndMovesOn()
    {
        TPFindReplace *find = findIn(QStringLiteral("x = 1\r\nx = 2"));
        find->setQuery(QStringLiteral("x"));
        find->setReplacement(QStringLiteral("y"));
        find->replaceOne(); // selects the first
        QCOMPARE(m_buffer->text(), QStringLiteral("x = 1\r\nx = 2"));
        find->replaceOne();
        QCOMPARE(m_buffer->text(), QStringLiteral("y = 1\r\nx = 2"));
        QCOMPARE(find->matchCount(), 1);
        QCOMPARE(find->currentMatch(), 1);
    }

    void replaceAllIsOneUndoStepAndKeepsLineEndings()
    {
        const QString original = QString::fromUtf8("a\r\nb a\rc\na\u2028a");
        TPFindReplace *find = findIn(original);
        find->setQuery(QStringLiteral("a"));
        find->setReplacement(QStringLiteral("long"));
        find->replaceAll();
        QCOMPARE(m_buffer->text(), QString::fromUtf8("long\r\nb long\rc\nlong\u2028long"));
        QCOMPARE(find->matchCount(), 0);
        m_buffer->undo();
        QCOMPARE(m_buffer->text(), original);
    }

    void regularExpressionReplacementsUseGroups()
    {
        TPFindReplace *find = findIn(QStringLiteral("tap(1, 2) tap(3, 4)"));
        find->setRegularExpression(true);
        find->setQuery(QStringLiteral("tap\\((\\d+), (\\d+)\\)"));
        find->setReplacement(QStringLiteral("tap(\\2, \\1)"));
        find->replaceAll();
        QCOMPARE(m_buffer->text(), QStringLiteral("tap(2, 1) tap(4, 3)"));
    }

    void theCountFollowsTyping()
    {
        TPFindReplace *find = findIn(QStringLiteral("ab"));
        find->setQuery(QStringLiteral("b"));
        QCOMPARE(find->matchCount(), 1);
        m_buffer->select(2, 2);
        m_buffer->typeCharacter(u'b');
        QTRY_COMPARE(find->matchCount(), 2);
    }
};

QTEST_MAIN(TestTPFindReplace)
#include "tst_tpfindreplace.moc"
