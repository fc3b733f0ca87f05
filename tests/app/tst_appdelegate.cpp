#include "app/appdelegate.h"
#include "app/tpkhovc.h"
#include "foundation/tplang.h"
#include "foundation/tpnotificationcenter.h"
#include "platform/tpnavigationstack.h"
#include "scripts/tpscriptslistvc.h"
#include "settings/tpsettingsvc.h"
#include "tpscreenfixture.h"

#include "tptestutil.h"

#include <QDir>
#include <QFile>
#include <QSettings>
#include <QTest>

class TestAppDelegate : public QObject
{
    Q_OBJECT

    TPScreenFixture m_fixture{"tst_appdelegate"};
    std::unique_ptr<AppDelegate> m_app;

    QString ownerFile() const
    {
        return m_fixture.ownerDir->filePath(QStringLiteral("jb/var/tmp/tapper_owner.txt"));
    }

    AppDelegate *launch()
    {
        m_app = std::make_unique<AppDelegate>();
        m_fixture.presenter.reset();
        if (!m_app->didFinishLaunching())
            return nullptr;
        return m_app.get();
    }

    TPAlertController *prompt() const { return m_app->presenter()->current(); }

    // The jailbreak root sits under a plain file, so no owner file can be written there.
    void makeOwnerFileUnwritable()
    {
        const QString blocker = m_fixture.ownerDir->filePath(QStringLiteral("blocker"));
        QVERIFY(TPWriteFileBytes(blocker, "file"));
        TPSetOwnerFileLocations({blocker + QStringLiteral("/jb"),
                                 m_fixture.ownerDir->filePath(QStringLiteral("AppGroup"))});
    }

private slots:
    void init() { QVERIFY(m_fixture.setUp()); }
    void cleanup() { m_app.reset(); }

    void storedNameGoesStraightToTheTabs()
    {
        QVERIFY(TPWriteFileBytes(ownerFile(), "Tavo\n"));
        AppDelegate *app = launch();
        QVERIFY(app);
        QCOMPARE(prompt(), nullptr);
        QVERIFY(app->tabBarController());
        QCOMPARE(app->tabBarController()->selectedIndex(), 0);
    }

    void tabsAreScriptsStoreSettingsWithTheirIcons()
    {
        QVERIFY(TPWriteFileBytes(ownerFile(), "Tavo\n"));
        const auto &tabs = launch()->tabBarController()->tabs();
        QCOMPARE(tabs.size(), 3);
        auto *scripts = qobject_cast<TPScriptsListVC *>(tabs.at(0).stack->topViewController());
        QVERIFY(scripts);
        QCOMPARE(scripts->folder(), QString());
        QVERIFY(qobject_cast<TPKhoVC *>(tabs.at(1).stack->topViewController()));
        QVERIFY(qobject_cast<TPSettingsVC *>(tabs.at(2).stack->topViewController()));
        QCOMPARE(tabs.at(0).title, QStringLiteral("Scripts"));
        QCOMPARE(tabs.at(1).title, QStringLiteral("Kho"));
        QCOMPARE(tabs.at(2).title, QString::fromUtf8("Cài đặt"));
        QCOMPARE(tabs.at(0).icon.fileName(), QStringLiteral("doc.text.svg"));
        QCOMPARE(tabs.at(1).icon.fileName(), QStringLiteral("cart.svg"));
        QCOMPARE(tabs.at(2).icon.fileName(), QStringLiteral("gearshape.svg"));
    }

    void launchSendsNothingButTheShownListsListing()
    {
        QVERIFY(TPWriteFileBytes(ownerFile(), "Tavo\n"));
        launch();
        QTRY_COMPARE(m_fixture.engine->requests().size(), 1);
        QCOMPARE(m_fixture.engine->requests().first().path, QStringLiteral("/scripts"));
        QCOMPARE(m_fixture.requestsTo(QStringLiteral("/settings")).size(), 0);
    }

    void ownerFileOfOnlyWhitespaceAsksForAName()
    {
        QVERIFY(TPWriteFileBytes(ownerFile(), " \n\t\n"));
        AppDelegate *app = launch();
        QCOMPARE(app->tabBarController(), nullptr);
        QVERIFY(prompt());
        QCOMPARE(prompt()->title(), QString::fromUtf8("Đặt tên định danh máy"));
        QCOMPARE(prompt()->message(),
                 QString::fromUtf8("Nhập tên để nhận diện máy này (vd: Tavo)"));
        QCOMPARE(prompt()->placeholder(), QString::fromUtf8("Tên của bạn"));
        QVERIFY(!prompt()->autocorrection());
        QCOMPARE(prompt()->actions().size(), 1);
        QCOMPARE(prompt()->actions().first()->title(), QString::fromUtf8("Lưu"));
        QCOMPARE(m_fixture.engine->requests().size(), 0);
    }

    void promptCannotBeCancelled()
    {
        launch();
        TPAlertController *alert = prompt();
        alert->dismissByCancel();
        QCOMPARE(prompt(), alert);
        alert->triggerAction(0); // disabled while empty
        QCOMPARE(prompt(), alert);
        QCOMPARE(m_app->tabBarController(), nullptr);
    }

    void saveFollowsTheTrimmedText()
    {
        launch();
        TPAlertAction *save = m_app->ownerSaveAction();
        QCOMPARE(save, prompt()->actions().first());
        QVERIFY(!save->isEnabled());
        prompt()->setText(QStringLiteral("   "));
        QVERIFY(!save->isEnabled());
        prompt()->setText(QStringLiteral("   T"));
        QVERIFY(save->isEnabled());
        prompt()->setText(QStringLiteral("   "));
        QVERIFY(!save->isEnabled());
        prompt()->setText(QString::fromUtf8("\u00a0\u2028"));
        QVERIFY(!save->isEnabled());
    }

    void savingWritesTheTrimmedNameAndShowsScripts()
    {
        launch();
        prompt()->setText(QStringLiteral("  Tavo  "));
        prompt()->triggerAction(0);
        QCOMPARE(TPReadFileBytes(ownerFile()), QByteArray("Tavo\n"));
        QVERIFY(m_app->tabBarController());
        QCOMPARE(m_app->tabBarController()->selectedIndex(), 0);
        QCOMPARE(prompt(), nullptr);
    }

    void unwritableOwnerFileStillShowsTabsAndAsksAgainNextLaunch()
    {
        makeOwnerFileUnwritable();
        launch();
        prompt()->setText(QStringLiteral("Tavo"));
        prompt()->triggerAction(0);
        QVERIFY(m_app->tabBarController());
        launch();
        QVERIFY(prompt());
        QCOMPARE(m_app->tabBarController(), nullptr);
    }

    void languageChangeRetitlesTheTabsAndKeepsIconsAndOrder()
    {
        QVERIFY(TPWriteFileBytes(ownerFile(), "Tavo\n"));
        TPTabBarController *tabs = launch()->tabBarController();
        const auto before = tabs->tabs();
        QSettings().setValue(TPLangKey, QStringLiteral("en"));
        TPNotificationCenter::defaultCenter()->postLangChanged();
        const auto after = tabs->tabs();
        QCOMPARE(after.at(0).title, QStringLiteral("Scripts"));
        QCOMPARE(after.at(1).title, QStringLiteral("Store"));
        QCOMPARE(after.at(2).title, QStringLiteral("Settings"));
        for (int i = 0; i < 3; ++i) {
            QCOMPARE(after.at(i).icon, before.at(i).icon);
            QCOMPARE(after.at(i).stack, before.at(i).stack);
        }
        QCOMPARE(tabs->data(tabs->index(1), TPTabBarController::TitleRole).toString(),
                 QStringLiteral("Store"));
    }

    void languageChangeBeforeTheTabsExistDoesNothing()
    {
        AppDelegate *app = launch();
        TPNotificationCenter::defaultCenter()->postLangChanged();
        QCOMPARE(app->tabBarController(), nullptr);
    }

    void switchingTabsShowsTheStoreAndSettings()
    {
        QVERIFY(TPWriteFileBytes(ownerFile(), "Tavo\n"));
        TPTabBarController *tabs = launch()->tabBarController();
        auto *settings =
            qobject_cast<TPSettingsVC *>(tabs->tabs().at(2).stack->topViewController());
        QVERIFY(!settings->isViewLoaded());
        tabs->setSelectedIndex(2);
        QVERIFY(settings->isViewLoaded());
        QCOMPARE(settings->numberOfRowsInSection(2), 6);
    }
};

QTEST_MAIN(TestAppDelegate)
#include "tst_appdelegate.moc"
