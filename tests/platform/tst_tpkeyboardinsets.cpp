#include "platform/tpkeyboardinsets.h"

#include <QRectF>
#include <QSignalSpy>
#include <QTest>

// The keyboard's frame turned into a bottom inset, without any screen.
class TestTPKeyboardInsets : public QObject
{
    Q_OBJECT

private slots:
    void theBottomInsetIsHowFarTheKeyboardReachesIntoTheView()
    {
        TPKeyboardInsets keyboard;
        QSignalSpy shown(&keyboard, &TPKeyboardInsets::keyboardShownChanged);
        keyboard.keyboardWillChangeFrame(QRectF(0, 400, 390, 300), 700);
        QCOMPARE(keyboard.insets().bottom(), 300.0);
        QVERIFY(keyboard.keyboardShown());
        QCOMPARE(shown.size(), 1);
    }

    void aKeyboardBelowTheViewOverlapsNothing()
    {
        TPKeyboardInsets keyboard;
        keyboard.keyboardWillChangeFrame(QRectF(0, 800, 390, 300), 700);
        QCOMPARE(keyboard.insets().bottom(), 0.0);
        QVERIFY(!keyboard.keyboardShown());
    }

    void aMissingOrOddFrameChangesNothing()
    {
        TPKeyboardInsets keyboard;
        keyboard.setInsets(QMarginsF(1, 2, 3, 4));
        QSignalSpy changed(&keyboard, &TPKeyboardInsets::insetsChanged);
        keyboard.keyboardWillChangeFrame(QVariant(), 700);
        keyboard.keyboardWillChangeFrame(QVariant(QStringLiteral("frame")), 700);
        QCOMPARE(keyboard.insets(), QMarginsF(1, 2, 3, 4));
        QCOMPARE(changed.size(), 0);
    }

    void hidingZeroesTheBottomAndKeepsTheOtherThree()
    {
        TPKeyboardInsets keyboard;
        keyboard.setInsets(QMarginsF(1, 2, 3, 4));
        keyboard.keyboardWillChangeFrame(QRectF(0, 500, 390, 300), 700);
        QCOMPARE(keyboard.insets(), QMarginsF(1, 2, 3, 200));
        keyboard.keyboardWillHide();
        QCOMPARE(keyboard.insets(), QMarginsF(1, 2, 3, 0));
        QVERIFY(!keyboard.keyboardShown());
    }
};

QTEST_MAIN(TestTPKeyboardInsets)
#include "tst_tpkeyboardinsets.moc"
