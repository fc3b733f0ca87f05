// Every item model of the app under QAbstractItemModelTester, which checks the model's
// contract (row counts, indexes, signals in step with changes) after every change made
// while it watches: the scripts rows through reloads and search, the settings rows through
// a language change, the tab bar through its tabs and titles, and the titled, quick-open
// and search rows through every way each changes.
#include "engine/tpengineapi.h"
#include "platform/tpnavigationstack.h"
#include "platform/tppresenter.h"
#include "platform/tptabbarcontroller.h"
#include "platform/tptitledrowsmodel.h"
#include "scripts/tpquickopenrowsmodel.h"
#include "scripts/tpscriptrowsmodel.h"
#include "scripts/tpscriptslistvc.h"
#include "scripts/tpsearchrowsmodel.h"
#include "settings/tpsettingsrowsmodel.h"
#include "settings/tpsettingsvc.h"
#include "tprecordingengine.h"
#include "tptestutil.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTest>

namespace {

// A screen that counts how often it appears.
class CountingScreen : public TPViewController
{
public:
    QUrl viewUrl() const override { return {}; }
    void viewWillAppear() override { ++appeared; }
    int appeared = 0;
};

} // namespace

class TestModels : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }

    void scriptRowsKeepTheModelContractThroughReloadsAndSearch()
    {
        TPRecordingEngine engine;
        QVERIFY(engine.startAsTheEngine());
        engine.setDefaultAnswer(TPScriptedAnswer::ok(
            "{\"entries\":[{\"path\":\"lib\",\"dir\":true},{\"path\":\"a.lua\",\"dir\":false},"
            "{\"path\":\"b.lua\",\"dir\":false}]}"));
        TPPresenter presenter;
        TPScriptsListVC list{QString()};
        list.setPresenter(&presenter);
        QAbstractItemModelTester tester(list.rows(),
                                        QAbstractItemModelTester::FailureReportingMode::QtTest);
        list.reloadData();
        QTRY_COMPARE(list.rows()->rowCount(), 3);
        list.setSearchText(QStringLiteral("B.L"));
        QCOMPARE(list.rows()->rowCount(), 1);
        list.setSearchText(QString());
        QCOMPARE(list.rows()->rowCount(), 3);
        engine.setDefaultAnswer(TPScriptedAnswer::ok("{\"entries\":[]}"));
        list.reloadData();
        QTRY_COMPARE(list.rows()->rowCount(), 0);
    }

    void settingsRowsKeepTheModelContractThroughALanguageChange()
    {
        TPPointEngineAPIAtNothing();
        TPSettingsVC settings;
        QAbstractItemModelTester tester(settings.rowsModel(),
                                        QAbstractItemModelTester::FailureReportingMode::QtTest);
        settings.loadViewIfNeeded();
        const int rows = settings.rowsModel()->rowCount();
        QVERIFY(rows > 0);
        settings.onLangSegmentChanged(1);
        settings.onLangSegmentChanged(0);
        QCOMPARE(settings.rowsModel()->rowCount(), rows);
        settings.onSwitchChanged(0, true);
        settings.onSwitchChanged(0, false);
        QCOMPARE(settings.rowsModel()->rowCount(), rows);
    }

    void tabBarKeepsTheModelContractThroughTabsAndTitles()
    {
        TPPresenter presenter;
        TPTabBarController tabs;
        QAbstractItemModelTester tester(&tabs,
                                        QAbstractItemModelTester::FailureReportingMode::QtTest);
        tabs.setTabs(
            {{new TPNavigationStack(new TPSettingsVC, &presenter), QStringLiteral("A"), QUrl()}});
        QCOMPARE(tabs.rowCount(), 1);
        tabs.setTitle(0, QStringLiteral("B"));
        QCOMPARE(tabs.data(tabs.index(0), TPTabBarController::TitleRole).toString(),
                 QStringLiteral("B"));
    }

    // Replacing the screens above the root goes row by row, as the view follows, and only
    // the new top appears.
    void replacingTheScreensAboveTheRootShowsOnlyTheNewTop()
    {
        TPPresenter presenter;
        auto *root = new CountingScreen;
        TPNavigationStack stack(root, &presenter);
        QAbstractItemModelTester tester(&stack,
                                        QAbstractItemModelTester::FailureReportingMode::QtTest);
        stack.setVisible(true);
        stack.pushViewController(new CountingScreen);
        stack.pushViewController(new CountingScreen);
        auto *folder = new CountingScreen;
        auto *file = new CountingScreen;
        QSignalSpy removed(&stack, &QAbstractItemModel::rowsRemoved);
        stack.replaceAboveRoot({folder, file});
        QCOMPARE(removed.size(), 2);
        QCOMPARE(stack.depth(), 3);
        QCOMPARE(stack.controllerAt(1), folder);
        QCOMPARE(stack.topViewController(), file);
        QCOMPARE(folder->appeared, 0);
        QCOMPARE(file->appeared, 1);
        QCOMPARE(file->navigationController(), &stack);
        stack.popViewController();
        QCOMPARE(folder->appeared, 1);
    }

    // Every removal names the screens that went, always the top ones: the view pops its
    // pages down to the one below `first`.
    void eachRemovalNamesTheTopScreensThatWent()
    {
        TPPresenter presenter;
        TPNavigationStack stack(new CountingScreen, &presenter);
        for (int pushed = 0; pushed < 3; ++pushed)
            stack.pushViewController(new CountingScreen);
        QSignalSpy removed(&stack, &QAbstractItemModel::rowsRemoved);
        stack.popViewController();
        QCOMPARE(removed.takeFirst().mid(1), QVariantList({3, 3}));
        stack.replaceAboveRoot({new CountingScreen});
        QCOMPARE(removed.size(), 2);
        QCOMPARE(removed.at(0).mid(1), QVariantList({2, 2}));
        QCOMPARE(removed.at(1).mid(1), QVariantList({1, 1}));
        QCOMPARE(stack.depth(), 2);
    }

    // A tab counts as shown from its first selection on, and stays so: its screens are built
    // then and kept.
    void aTabIsShownFromItsFirstSelectionOn()
    {
        TPPresenter presenter;
        TPTabBarController tabs;
        QAbstractItemModelTester tester(&tabs,
                                        QAbstractItemModelTester::FailureReportingMode::QtTest);
        tabs.setTabs(
            {{new TPNavigationStack(new TPSettingsVC, &presenter), QStringLiteral("A"), QUrl()},
             {new TPNavigationStack(new TPSettingsVC, &presenter), QStringLiteral("B"), QUrl()}});
        const auto shown = [&tabs](int row) {
            return tabs.data(tabs.index(row), TPTabBarController::ShownRole).toBool();
        };
        QVERIFY(shown(0));
        QVERIFY(!shown(1));
        QSignalSpy changed(&tabs, &QAbstractItemModel::dataChanged);
        tabs.setSelectedIndex(1);
        QVERIFY(shown(1));
        QCOMPARE(changed.size(), 1);
        tabs.setSelectedIndex(0);
        QVERIFY(shown(0) && shown(1));
        QCOMPARE(changed.size(), 1);
    }

    // Titled rows replaced whole, then changed in place with rows coming and going.
    void titledRowsKeepTheModelContractWhetherReplacedOrUpdated()
    {
        TPTitledRowsModel rows;
        QAbstractItemModelTester tester(&rows,
                                        QAbstractItemModelTester::FailureReportingMode::QtTest);
        using Row = TPTitledRowsModel::Row;
        rows.setRows({{QStringLiteral("a"), QStringLiteral("1")},
                      {QStringLiteral("b"), QStringLiteral("2"), TPTitledRowsModel::Dimmed}});
        QCOMPARE(rows.rowCount(), 2);
        rows.updateRows({{QStringLiteral("a"), QStringLiteral("1")},
                         {QStringLiteral("c"), QStringLiteral("3")},
                         {QStringLiteral("d"), QString(), TPTitledRowsModel::Added}});
        QCOMPARE(rows.rowCount(), 3);
        QCOMPARE(rows.data(rows.index(1), TPTitledRowsModel::TitleRole).toString(),
                 QStringLiteral("c"));
        rows.updateRows({Row{QStringLiteral("e"), QString()}});
        QCOMPARE(rows.rowCount(), 1);
        rows.updateRows({});
        QCOMPARE(rows.rowCount(), 0);
        rows.setRows({Row{QStringLiteral("f"), QString()}});
        QCOMPARE(rows.rowCount(), 1);
    }

    // Quick-open rows replaced, and a file's rows marked running and back.
    void quickOpenRowsKeepTheModelContractThroughRunning()
    {
        TPQuickOpenRowsModel rows;
        QAbstractItemModelTester tester(&rows,
                                        QAbstractItemModelTester::FailureReportingMode::QtTest);
        TPQuickOpenRowsModel::Row main;
        main.name = QStringLiteral("main.lua");
        main.path = QStringLiteral("main.lua");
        TPQuickOpenRowsModel::Row util;
        util.name = QStringLiteral("util.lua");
        util.folder = QStringLiteral("lib");
        util.path = QStringLiteral("lib/util.lua");
        rows.setRows({main, util});
        QCOMPARE(rows.rowCount(), 2);
        QSignalSpy changed(&rows, &QAbstractItemModel::dataChanged);
        rows.setRunning(QStringLiteral("lib/util.lua"), true);
        QCOMPARE(changed.size(), 1);
        QVERIFY(!rows.data(rows.index(1), TPQuickOpenRowsModel::RunEnabledRole).toBool());
        rows.setRunning(QStringLiteral("lib/util.lua"), false);
        QVERIFY(rows.data(rows.index(1), TPQuickOpenRowsModel::RunEnabledRole).toBool());
        rows.setRows({util});
        QCOMPARE(rows.rowCount(), 1);
        rows.setRows({});
        QCOMPARE(rows.rowCount(), 0);
    }

    // Search rows replaced with more, then fewer, and a file switched out of a replace.
    void searchRowsKeepTheModelContractThroughEveryChange()
    {
        TPSearchRowsModel rows;
        QAbstractItemModelTester tester(&rows,
                                        QAbstractItemModelTester::FailureReportingMode::QtTest);
        TPSearchRowsModel::Row file;
        file.kind = TPSearchRowsModel::FileRow;
        file.title = QStringLiteral("main.lua");
        file.path = QStringLiteral("main.lua");
        file.included = true;
        file.includable = true;
        TPSearchRowsModel::Row match;
        match.kind = TPSearchRowsModel::MatchRow;
        match.title = QStringLiteral("tap(1)");
        match.path = QStringLiteral("main.lua");
        match.line = 3;
        rows.setRows({file, match, match});
        QCOMPARE(rows.rowCount(), 3);
        rows.setIncluded(0, false);
        QCOMPARE(rows.rows().at(0).included, false);
        rows.setRows({file});
        QCOMPARE(rows.rowCount(), 1);
        rows.setRows({file, match, match, match});
        QCOMPARE(rows.rowCount(), 4);
        rows.setRows({});
        QCOMPARE(rows.rowCount(), 0);
    }
};

QTEST_MAIN(TestModels)
#include "tst_models.moc"
