#include "app/appdelegate.h"
#include "app/tpappwindow.h"
#include "platform/tpalertcontroller.h"
#include "platform/tppresenter.h"
#include "scripts/tpscriptslistvc.h"
#include "tpquicktestutil.h"
#include "tpscreenfixture.h"
#include "tptestutil.h"

#include <QFontInfo>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickStyle>
#include <QQuickWindow>
#include <QTest>

#include <functional>
#include <tuple>

class TestTPAppWindow : public QObject
{
    Q_OBJECT

    TPScreenFixture m_fixture{"tst_tpappwindow"};

private slots:
    void initTestCase() { QQuickStyle::setStyle(QStringLiteral("Basic")); }
    void init() { QVERIFY(m_fixture.setUp()); }

    void theWindowIsMadeForTheDelegate()
    {
        AppDelegate delegate;
        QQmlEngine engine;
        const TPAppWindow window(engine, delegate);
        QVERIFY2(window.window(), qPrintable(window.errorString()));
        QCOMPARE(window.window()->property("app").value<AppDelegate *>(), &delegate);
        QVERIFY(window.window()->isVisible());
    }

    // The list's page is read on the loader thread while the window is built, without the
    // tabs asking: once read, the engine has it, and a component for it is ready at once.
    void theFirstScreensPageIsReadWhileTheWindowIsBuilt()
    {
        AppDelegate delegate;
        QQmlEngine engine;
        const TPAppWindow window(engine, delegate);
        QVERIFY(window.window());
        QVERIFY(delegate.tabBarController() == nullptr);
        QTRY_VERIFY(window.firstPageRead());
        QVERIFY(QQmlComponent(&engine, TPScriptsListVC::pageUrl(), QQmlComponent::Asynchronous)
                    .isReady());
    }

    // Every text of the first screen, its rows' and its hidden ones' among them, is drawn
    // with a font the launch loaded while the views were read.
    void theFirstScreensTextsUseTheFontsLoadedWhileItsViewsWereRead()
    {
        QVERIFY(TPWriteFileBytes(
            m_fixture.ownerDir->filePath(QStringLiteral("jb/var/tmp/tapper_owner.txt")), "Tavo"));
        m_fixture.serveListing(
            R"({"entries":[{"path":"lib","dir":true},{"path":"main.lua","dir":false}]})");
        AppDelegate delegate;
        QQmlEngine engine;
        const TPAppWindow window(engine, delegate);
        QVERIFY(window.window());
        delegate.didFinishLaunching();
        QQuickItem *root = window.window()->contentItem();
        QTRY_VERIFY(TPFindShownItem(root, QStringLiteral("row1")));

        // Fonts the same engine draws: the same face, size and weight.
        const auto engineOf = [](const QFont &font) {
            const QFontInfo info(font);
            return std::make_tuple(info.family(), info.pixelSize(), info.weight(), info.style());
        };
        QList<decltype(engineOf(QFont()))> loaded;
        for (const QFont &font : TPAppWindow::firstScreenFonts())
            loaded.append(engineOf(font));
        int texts = 0;
        std::function<void(QQuickItem *)> check = [&](QQuickItem *item) {
            if (item->inherits("QQuickText") || item->inherits("QQuickTextInput")) {
                ++texts;
                const QFont font = item->property("font").value<QFont>();
                QVERIFY2(loaded.contains(engineOf(font)),
                         qPrintable(QStringLiteral("\"%1\" in %2 px, weight %3")
                                        .arg(item->property("text").toString())
                                        .arg(QFontInfo(font).pixelSize())
                                        .arg(QFontInfo(font).weight())));
            }
            for (QQuickItem *child : item->childItems())
                check(child);
        };
        check(root);
        // The tab titles, the bar's title and glyphs, the search field and both rows.
        QVERIFY(texts > 10);
    }

    // The alert host is made when the first alert comes up, not at launch. Made then, it
    // still takes the keyboard from the screen behind, and gives it back as the alert goes.
    void theFirstAlertMakesTheHostWhichHoldsTheKeyboardWhileItShows()
    {
        AppDelegate delegate;
        QQmlEngine engine;
        const TPAppWindow window(engine, delegate);
        QQuickWindow *shown = window.window();
        QVERIFY(shown);
        shown->requestActivate();
        QVERIFY(QTest::qWaitForWindowActive(shown));
        QQuickItem *hostLoader =
            TPFindItem(shown->contentItem(), QStringLiteral("alertHostLoader"));
        QVERIFY(hostLoader);
        QCOMPARE(hostLoader->property("item").value<QQuickItem *>(), nullptr);

        QQuickItem behind(shown->contentItem());
        behind.forceActiveFocus();
        QVERIFY(behind.hasActiveFocus());
        auto *alert =
            new TPAlertController(QStringLiteral("T"), QString(), TPAlertController::Style::Alert);
        bool chosen = false;
        alert->addAction(QStringLiteral("OK"), TPAlertAction::Style::Default,
                         [&chosen] { chosen = true; });
        delegate.presenter()->present(alert);
        QQuickItem *host = nullptr;
        QTRY_VERIFY((host = hostLoader->property("item").value<QQuickItem *>()));
        QTRY_VERIFY(host->hasActiveFocus());
        QVERIFY(!behind.hasActiveFocus());

        QTest::keyClick(shown, Qt::Key_Return);
        QVERIFY(chosen);
        QCOMPARE(delegate.presenter()->current(), nullptr);
        QTRY_VERIFY(behind.hasActiveFocus());
        // Kept for the next alert.
        QCOMPARE(hostLoader->property("item").value<QQuickItem *>(), host);
    }
};

QTEST_MAIN(TestTPAppWindow)
#include "tst_tpappwindow.moc"
