#include "platform/tpalertcontroller.h"
#include "platform/tppresenter.h"

#include <QSignalSpy>
#include <QTest>

// How the presenter shows a sheet: a popover beside its anchor only on a wide window.
class TestTPPresenter : public QObject
{
    Q_OBJECT

    static TPAlertController *sheet(const QString &anchor)
    {
        auto *alert =
            new TPAlertController(QString(), QString(), TPAlertController::Style::ActionSheet);
        alert->setAnchor(anchor);
        alert->addAction(QStringLiteral("A"), TPAlertAction::Style::Default);
        alert->addAction(QStringLiteral("Cancel"), TPAlertAction::Style::Cancel);
        return alert;
    }

private slots:
    void anAnchoredSheetIsAPopoverOnlyOnAWideWindow()
    {
        TPPresenter presenter;
        QSignalSpy layout(&presenter, &TPPresenter::layoutChanged);
        presenter.setWindowWidth(390);
        presenter.present(sheet(QStringLiteral("add")));
        QVERIFY(!presenter.currentIsPopover());
        presenter.setWindowWidth(TPPresenter::WideWindowWidth);
        QVERIFY(presenter.currentIsPopover());
        QVERIFY(layout.size() >= 3);
    }

    void aSheetWithoutAnchorOrAnAlertIsNeverAPopover()
    {
        TPPresenter presenter;
        presenter.setWindowWidth(1024);
        presenter.present(sheet(QString()));
        QVERIFY(!presenter.currentIsPopover());
        presenter.current()->triggerAction(1);
        presenter.present(
            new TPAlertController(QStringLiteral("T"), QString(), TPAlertController::Style::Alert));
        QVERIFY(!presenter.currentIsPopover());
    }
};

QTEST_MAIN(TestTPPresenter)
#include "tst_tppresenter.moc"
