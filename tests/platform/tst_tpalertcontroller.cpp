#include "platform/tpalertcontroller.h"

#include <QTest>

// An alert as a controller builds it.
class TestTPAlertController : public QObject
{
    Q_OBJECT

private slots:
    // The keyboard may correct and capitalise what is typed into the field unless the alert
    // switches either off.
    void theFieldsKeyboardHintsFollowCorrectionAndCapitalisation_data()
    {
        QTest::addColumn<bool>("autocorrection");
        QTest::addColumn<bool>("autocapitalization");
        QTest::addColumn<int>("hints");
        QTest::newRow("both on") << true << true << int(Qt::ImhNone);
        QTest::newRow("no correction") << false << true << int(Qt::ImhNoPredictiveText);
        QTest::newRow("no capitals") << true << false << int(Qt::ImhNoAutoUppercase);
        QTest::newRow("both off") << false << false
                                  << int(Qt::ImhNoPredictiveText | Qt::ImhNoAutoUppercase);
    }
    void theFieldsKeyboardHintsFollowCorrectionAndCapitalisation()
    {
        QFETCH(bool, autocorrection);
        QFETCH(bool, autocapitalization);
        QFETCH(int, hints);
        TPAlertController alert(QStringLiteral("Name"), QString(), TPAlertController::Style::Alert);
        alert.addTextField({QString(), QString(), autocorrection, autocapitalization});
        QCOMPARE(alert.inputMethodHints(), hints);
    }
};

QTEST_MAIN(TestTPAlertController)
#include "tst_tpalertcontroller.moc"
