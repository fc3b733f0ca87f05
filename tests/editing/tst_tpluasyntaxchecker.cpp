#include "editing/tpluasyntaxchecker.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>
#include <QThread>
#include <QThreadPool>

// The check's wait and worker, without any editor.
class TestTPLuaSyntaxChecker : public QObject
{
    Q_OBJECT

private slots:
    // Each change restarts the wait: one check, no sooner than 0.6 s after the last change,
    // of the text as it then is.
    void aBurstOfChangesIsCheckedOnceAfterTheWait()
    {
        QString text = QStringLiteral("x = 1");
        TPLuaSyntaxChecker checker(QStringLiteral("a.lua"), [&text] { return text; });
        QSignalSpy checked(&checker, &TPLuaSyntaxChecker::checked);
        QElapsedTimer sinceLastChange;
        for (const QString &typed :
             {QStringLiteral("x = "), QStringLiteral("x = ("), QStringLiteral("for i = 1, 2 do")}) {
            text = typed;
            checker.textChanged();
            sinceLastChange.start();
            QVERIFY(checker.pending());
        }
        QVERIFY(checked.wait(5000));
        // A coarse timer may fire up to 5% early.
        QVERIFY(sinceLastChange.elapsed() >= TPLuaSyntaxChecker::DelayMs * 95 / 100);
        QCOMPARE(checked.size(), 1);
        QVERIFY(!checker.pending());
        QCOMPARE(checker.result().line, 1);
        QVERIFY(checker.result().message.contains(QLatin1String("'end' expected")));
    }

    // The text is taken where the editor lives, so the worker never reads it while it is
    // typed into; the result comes back there too.
    void theTextIsTakenOnTheCheckersThreadAndTheResultComesBackToIt()
    {
        QThread *readOn = nullptr;
        TPLuaSyntaxChecker checker(QStringLiteral("a.lua"), [&readOn] {
            readOn = QThread::currentThread();
            return QStringLiteral("local x = 1");
        });
        QThread *resultOn = nullptr;
        connect(&checker, &TPLuaSyntaxChecker::checked, this,
                [&resultOn] { resultOn = QThread::currentThread(); });
        checker.checkNow();
        QTRY_VERIFY(resultOn != nullptr);
        QCOMPARE(readOn, QThread::currentThread());
        QCOMPARE(resultOn, QThread::currentThread());
        QVERIFY(checker.result().ok());
    }

    // A check started before a newer one reports nothing of its own.
    void onlyTheNewestChecksResultIsKept()
    {
        QString text = QStringLiteral("while true do");
        TPLuaSyntaxChecker checker(QStringLiteral("a.lua"), [&text] { return text; });
        QSignalSpy checked(&checker, &TPLuaSyntaxChecker::checked);
        checker.checkNow();
        text = QStringLiteral("while true do end");
        checker.checkNow();
        QVERIFY(checked.wait(5000));
        QTRY_VERIFY(QThreadPool::globalInstance()->activeThreadCount() == 0);
        QCoreApplication::processEvents();
        QCOMPARE(checked.size(), 1);
        QVERIFY(checker.result().ok());
    }
};

QTEST_GUILESS_MAIN(TestTPLuaSyntaxChecker)
#include "tst_tpluasyntaxchecker.moc"
