#include "platform/tpalertcontroller.h"

#include <QTest>

namespace {

// An alert or sheet whose actions append their titles to `triggered`.
struct Recorded
{
    TPAlertController alert;
    QStringList triggered;

    Recorded(TPAlertController::Style style, const QList<TPAlertAction::Style> &styles)
        : alert(QStringLiteral("Title"), QString(), style)
    {
        for (int i = 0; i < styles.size(); ++i)
            alert.addAction(QString::number(i), styles.at(i),
                            [this, i] { triggered.append(QString::number(i)); });
    }
};

using S = TPAlertAction::Style;

} // namespace

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

    void returnTriggersTheOnlyAction()
    {
        Recorded saved(TPAlertController::Style::Alert, {S::Default});
        saved.alert.submit();
        QCOMPARE(saved.triggered, QStringList({"0"}));
    }

    void returnTriggersThePreferredActionOverTheLastDefault()
    {
        Recorded confirm(TPAlertController::Style::Alert, {S::Cancel, S::Destructive});
        confirm.alert.setPreferredAction(confirm.alert.actions().at(0));
        confirm.alert.submit();
        QCOMPARE(confirm.triggered, QStringList({"0"}));

        Recorded create(TPAlertController::Style::Alert, {S::Cancel, S::Default});
        create.alert.submit();
        QCOMPARE(create.triggered, QStringList({"1"}));
    }

    void returnDoesNothingOnADisabledDefaultOrASheet()
    {
        Recorded prompt(TPAlertController::Style::Alert, {S::Default});
        prompt.alert.actions().at(0)->setEnabled(false);
        prompt.alert.submit();
        QCOMPARE(prompt.triggered, QStringList());

        Recorded sheet(TPAlertController::Style::ActionSheet, {S::Default, S::Cancel});
        sheet.alert.submit();
        QCOMPARE(sheet.triggered, QStringList());
    }

    void escapeTriggersTheCancelActionOrAnAlertsOnlyAction()
    {
        Recorded sheet(TPAlertController::Style::ActionSheet,
                       {S::Default, S::Destructive, S::Cancel});
        sheet.alert.cancelByKey();
        QCOMPARE(sheet.triggered, QStringList({"2"}));

        Recorded saved(TPAlertController::Style::Alert, {S::Default});
        saved.alert.cancelByKey();
        QCOMPARE(saved.triggered, QStringList({"0"}));

        Recorded twoWithoutCancel(TPAlertController::Style::Alert, {S::Default, S::Destructive});
        twoWithoutCancel.alert.cancelByKey();
        QCOMPARE(twoWithoutCancel.triggered, QStringList());
    }

    void keysReachTheAlertAsReturnEnterAndEscapeOnly()
    {
        Recorded confirm(TPAlertController::Style::Alert, {S::Cancel, S::Destructive});
        confirm.alert.pressKey(Qt::Key_A);
        confirm.alert.pressKey(Qt::Key_Space);
        QCOMPARE(confirm.triggered, QStringList());
        confirm.alert.pressKey(Qt::Key_Escape);
        QCOMPARE(confirm.triggered, QStringList({"0"}));

        Recorded saved(TPAlertController::Style::Alert, {S::Default});
        saved.alert.pressKey(Qt::Key_Enter);
        QCOMPARE(saved.triggered, QStringList({"0"}));
    }

    void aPreferredActionMustBeTheAlertsOwn()
    {
        Recorded create(TPAlertController::Style::Alert, {S::Cancel, S::Default});
        TPAlertAction stranger(QStringLiteral("x"), S::Default, {});
        create.alert.setPreferredAction(&stranger);
        create.alert.submit();
        QCOMPARE(create.triggered, QStringList({"1"}));
    }
};

QTEST_MAIN(TestTPAlertController)
#include "tst_tpalertcontroller.moc"
