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

    // The lint runs on the same pause, once the text compiles, with the globals known from
    // elsewhere; a text that does not compile shows its syntax error and no lint.
    void aTextThatCompilesIsLintedAndOneThatDoesNotIsNot()
    {
        QString text = QStringLiteral("local unused = 1\nshared()\ntpa()\n");
        TPLuaSyntaxChecker checker(QStringLiteral("a.lua"), [&text] { return text; });
        checker.setKnownGlobals({QStringLiteral("shared"), QStringLiteral("tap")});
        QSignalSpy checked(&checker, &TPLuaSyntaxChecker::checked);
        checker.checkNow();
        QVERIFY(checked.wait(5000));
        QCOMPARE(checker.lint().status, TPLintResult::Status::Linted);
        QStringList found;
        for (const TPLintWarning &warning : checker.lint().warnings)
            found.append(warning.code + u' ' + warning.name + u' ' + warning.suggestion);
        QCOMPARE(found, QStringList({"211 unused ", "113 tpa tap"}));

        text = QStringLiteral("local unused = (\n");
        checker.checkNow();
        QVERIFY(checked.wait(5000));
        QVERIFY(!checker.result().ok());
        QCOMPARE(checker.lint().status, TPLintResult::Status::NotRun);
        QVERIFY(checker.lint().warnings.isEmpty());
    }

    void aLintThatRunsOutOfTimeSaysSo()
    {
        QString text;
        for (int line = 0; line < 3000; ++line)
            text += QStringLiteral("v%1 = %1\n").arg(line);
        TPLuaSyntaxChecker checker(QStringLiteral("a.lua"), [&text] { return text; });
        checker.setLintTimeLimitMs(1);
        QSignalSpy checked(&checker, &TPLuaSyntaxChecker::checked);
        checker.checkNow();
        QVERIFY(checked.wait(5000));
        QCOMPARE(checker.lint().status, TPLintResult::Status::TooSlow);
    }
};

QTEST_GUILESS_MAIN(TestTPLuaSyntaxChecker)
#include "tst_tpluasyntaxchecker.moc"
