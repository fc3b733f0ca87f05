#include "platform/tpalertcontroller.h"
#include "platform/tppresenter.h"

#include <QQuickItem>
#include <QSignalSpy>
#include <QTest>

// How the presenter shows a sheet: a popover beside its anchor only on a wide window.
class TestTPPresenter : public QObject
{
    Q_OBJECT

    static TPAlertController *sheet(QQuickItem *anchor)
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
        QQuickItem button;
        presenter.present(sheet(&button));
        QVERIFY(!presenter.currentIsPopover());
        presenter.setWindowWidth(TPPresenter::WideWindowWidth);
        QVERIFY(presenter.currentIsPopover());
        QVERIFY(layout.size() >= 3);
    }

    void aSheetWithoutAnchorOrAnAlertIsNeverAPopover()
    {
        TPPresenter presenter;
        presenter.setWindowWidth(1024);
        presenter.present(sheet(nullptr));
        QVERIFY(!presenter.currentIsPopover());
        presenter.current()->triggerAction(1);
        presenter.present(
            new TPAlertController(QStringLiteral("T"), QString(), TPAlertController::Style::Alert));
        QVERIFY(!presenter.currentIsPopover());
    }

    // A popover leaves out Cancel, which a tap beside it does; on a phone the sheet offers
    // every action. The choice follows the window's width while the sheet is up.
    void aPopoverOffersEveryActionButCancel()
    {
        TPPresenter presenter;
        presenter.setWindowWidth(1024);
        QQuickItem button;
        TPAlertController *shown = sheet(&button);
        presenter.present(shown);
        QVERIFY(shown->actions().at(0)->isOffered());
        QVERIFY(!shown->actions().at(1)->isOffered());
        presenter.setWindowWidth(390);
        QVERIFY(shown->actions().at(1)->isOffered());
        presenter.setWindowWidth(1024);
        QVERIFY(!shown->actions().at(1)->isOffered());
    }

    // A popover whose button goes (its row reloaded) becomes a sheet with its Cancel.
    void aPopoverWhoseAnchorGoesOffersCancelAgain()
    {
        TPPresenter presenter;
        presenter.setWindowWidth(1024);
        auto *button = new QQuickItem;
        TPAlertController *shown = sheet(button);
        presenter.present(shown);
        QVERIFY(presenter.currentIsPopover());
        delete button;
        QVERIFY(!presenter.currentIsPopover());
        QVERIFY(shown->actions().at(1)->isOffered());
    }

    // A tap outside cancels a sheet; an alert waits for an answer.
    void aTapOutsideCancelsASheetButNotAnAlert()
    {
        TPPresenter presenter;
        bool cancelled = false;
        auto *alert =
            new TPAlertController(QStringLiteral("T"), QString(), TPAlertController::Style::Alert);
        alert->addAction(QStringLiteral("Cancel"), TPAlertAction::Style::Cancel,
                         [&cancelled] { cancelled = true; });
        presenter.present(alert);
        presenter.tapOutside();
        QCOMPARE(presenter.current(), alert);
        QVERIFY(!cancelled);
        alert->triggerAction(0);
        QTRY_COMPARE(presenter.current(), nullptr);
        presenter.present(sheet(nullptr));
        TPAlertController *shownSheet = presenter.current();
        bool sheetCancelled = false;
        connect(shownSheet, &TPAlertController::dismissed, this,
                [&sheetCancelled] { sheetCancelled = true; });
        presenter.tapOutside();
        QVERIFY(sheetCancelled);
    }
};

QTEST_MAIN(TestTPPresenter)
#include "tst_tppresenter.moc"
