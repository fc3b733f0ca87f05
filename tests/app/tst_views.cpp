#include "app/appdelegate.h"
#include "app/tpqmlmodules.h"
#include "foundation/tplang.h"
#include "foundation/tpownerfile.h"
#include "platform/tpnavigationstack.h"
#include "platform/tptheme.h"
#include "scripts/tpscriptslistvc.h"
#include "scripts/tpsearchvc.h"
#include "settings/tpsettingsvc.h"
#include "settings/tpslidercell.h"
#include "settings/tpswatchcell.h"
#include "tpquicktestutil.h"
#include "tpscreenfixture.h"

#include <QPointer>
#include <QQuickItem>
#include <QQuickStyle>
#include <QQuickView>
#include <QScopeGuard>
#include <QTest>

#include <algorithm>

namespace {

const QByteArray kListing = "{\"entries\":[{\"path\":\"lib\",\"dir\":true},"
                            "{\"path\":\"main.lua\",\"dir\":false}]}";

// Presses at `from`, moves to `to` in small steps as a finger does, and lifts there.
void drag(QQuickWindow *window, QPoint from, QPoint to)
{
    constexpr int steps = 12;
    QTest::mousePress(window, Qt::LeftButton, {}, from);
    for (int step = 1; step <= steps; ++step)
        QTest::mouseMove(window, from + (to - from) * step / steps, 16);
    QTest::mouseRelease(window, Qt::LeftButton, {}, to, 16);
}

qreal swipePosition(QQuickItem *row)
{
    return row->property("swipe").value<QObject *>()->property("position").toReal();
}

} // namespace

// The touch behaviours only a view has: swiping rows, pulling the list, dragging a slider.
class TestViews : public QObject
{
    Q_OBJECT

    TPScreenFixture m_fixture{"tst_views"};
    std::unique_ptr<TPNavigationStack> m_stack;
    std::unique_ptr<QQuickView> m_view;

    bool showPage(const char *page, const QVariantMap &properties, QSize size = QSize(390, 600))
    {
        m_view = std::make_unique<QQuickView>();
        m_view->setInitialProperties(properties);
        m_view->setResizeMode(QQuickView::SizeRootObjectToView);
        m_view->resize(size);
        m_view->setSource(QUrl(QStringLiteral("qrc:/qt-project.org/imports/TPCompanion/%1.qml")
                                   .arg(QLatin1String(page))));
        if (!m_view->rootObject())
            return false;
        m_view->show();
        return QTest::qWaitForWindowExposed(m_view.get());
    }

    // The first-run prompt of a launching app, shown, its field holding the keyboard.
    bool showFirstRunPromptWithTheKeyboard(AppDelegate &app)
    {
        app.didFinishLaunching();
        if (!app.presenter()->current() ||
            !showPage("Platform/AlertHost",
                      {{QStringLiteral("presenter"), QVariant::fromValue(app.presenter())}}))
            return false;
        QQuickItem *field = TPFindItem(m_view->rootObject(), QStringLiteral("alertTextField"));
        if (!field)
            return false;
        QTest::mouseClick(m_view.get(), Qt::LeftButton, {}, TPCentreOf(field));
        return QTest::qWaitFor([field] { return field->hasActiveFocus(); });
    }

    TPScriptsListVC *showList()
    {
        auto *list = new TPScriptsListVC(QString());
        m_stack = std::make_unique<TPNavigationStack>(list, m_fixture.presenter.get());
        m_stack->setVisible(true);
        if (!showPage("Scripts/ScriptsListPage",
                      {{QStringLiteral("controller"), QVariant::fromValue(list)}}))
            return nullptr;
        return list;
    }

    // The refresh button, and over it the indicator, of a list whose listing takes half a
    // second; null when the list is not shown.
    QQuickItem *showListReloadingSlowly()
    {
        m_fixture.engine->setResponder([](const TPRecordedRequest &) {
            TPScriptedAnswer answer = TPScriptedAnswer::ok(kListing);
            answer.delayMs = 500;
            return answer;
        });
        m_stack.reset();
        auto *list = new TPScriptsListVC(QString());
        m_stack = std::make_unique<TPNavigationStack>(list, m_fixture.presenter.get());
        if (!showPage("Platform/NavigationView",
                      {{QStringLiteral("stack"), QVariant::fromValue(m_stack.get())}}))
            return nullptr;
        m_stack->setVisible(true);
        return TPFindItem(m_view->rootObject(), QStringLiteral("refreshButton"));
    }

    // The style's spinner under `activity`, read from its own file once the indicator runs,
    // and only while it runs.
    static QQuickItem *runningSpinner(QQuickItem *activity)
    {
        const QList<QQuickItem *> made = activity->findChildren<QQuickItem *>();
        const auto found = std::find_if(made.begin(), made.end(), [](QQuickItem *item) {
            return item->inherits("QQuickBusyIndicator") && item->property("running").toBool();
        });
        return found == made.end() ? nullptr : *found;
    }

private slots:
    void initTestCase() { QQuickStyle::setStyle(QStringLiteral("Basic")); }
    void init()
    {
        QVERIFY(m_fixture.setUp());
        m_fixture.serveListing(kListing);
    }
    void cleanup()
    {
        m_view.reset();
        m_stack.reset();
    }

    void swipingFileRowRevealsDeleteWhichDeletes()
    {
        TPScriptsListVC *list = showList();
        QVERIFY(list);
        QTRY_VERIFY(TPFindItem(m_view->rootObject(), QStringLiteral("row1")));
        QQuickItem *fileRow = TPFindItem(m_view->rootObject(), QStringLiteral("row1"));
        // From the name: the right of a row holds its buttons.
        const QPoint start = TPCentreOf(fileRow) - QPoint(20, 0);
        drag(m_view.get(), start, start - QPoint(200, 0));
        QTRY_VERIFY(swipePosition(fileRow) < -0.5);
        QQuickItem *deleteButton = TPFindItem(fileRow, QStringLiteral("deleteButton"));
        QVERIFY(deleteButton);
        QTRY_VERIFY(deleteButton->isVisible());
        // Drawn on its row: the same top and height, flush with the right edge.
        const QRectF rowRect =
            fileRow->mapRectToScene(QRectF(0, 0, fileRow->width(), fileRow->height()));
        const QRectF buttonRect = deleteButton->mapRectToScene(
            QRectF(0, 0, deleteButton->width(), deleteButton->height()));
        QCOMPARE(buttonRect.top(), rowRect.top());
        QCOMPARE(buttonRect.height(), rowRect.height());
        QCOMPARE(buttonRect.right(), rowRect.right());
        // The row's name is drawn at the middle of the row, as the button's text is, once the
        // row is laid out (its layout places its parts when it is polished, before a frame).
        QQuickItem *label = TPFindItem(fileRow, QStringLiteral("rowLabel"));
        QVERIFY(label);
        const auto labelMiddle = [label] {
            return label->mapToScene(QPointF(0, label->height() / 2)).y();
        };
        QTRY_VERIFY2(
            qAbs(labelMiddle() - buttonRect.center().y()) <= 1.5,
            qPrintable(QStringLiteral("%1 vs %2").arg(labelMiddle()).arg(buttonRect.center().y())));
        // In the interface's language.
        QCOMPARE(TPFindItem(deleteButton, QStringLiteral("deleteButtonText"))
                     ->property("text")
                     .toString(),
                 QString::fromUtf8("Xoá"));
        m_fixture.engine->clearRequests();
        QTest::mouseClick(m_view.get(), Qt::LeftButton, {}, TPCentreOf(deleteButton));
        // The file is read, to be kept in the history, then deleted.
        QTRY_COMPARE(m_fixture.requestsTo(QStringLiteral("/script")).size(), 2);
        QCOMPARE(m_fixture.requestsTo(QStringLiteral("/script")).first().method, QByteArray("GET"));
        const TPRecordedRequest deletion = m_fixture.requestsTo(QStringLiteral("/script")).last();
        QCOMPARE(deletion.method, QByteArray("DELETE"));
        QCOMPARE(deletion.rawQuery, QStringLiteral("name=main.lua"));
        QCOMPARE(m_fixture.alert(), nullptr);
    }

    void rowButtonsRunAFileAndOpenTheMenu()
    {
        TPScriptsListVC *list = showList();
        QTRY_COMPARE(list->rows()->rowCount(), 2);
        QTRY_VERIFY(TPFindItem(m_view->rootObject(), QStringLiteral("rowButton_run_1")));
        QVERIFY(!TPFindItem(m_view->rootObject(), QStringLiteral("rowButton_run_0")));
        QQuickItem *run = TPFindItem(m_view->rootObject(), QStringLiteral("rowButton_run_1"));
        QTest::mouseClick(m_view.get(), Qt::LeftButton, {}, TPCentreOf(run));
        QTRY_COMPARE(m_fixture.requestsTo(QStringLiteral("/runfile")).size(), 1);
        QQuickItem *more = TPFindItem(m_view->rootObject(), QStringLiteral("rowButton_more_0"));
        QVERIFY(more && more->isVisible());
        // A folder's row has one button and no room kept for a second: its menu button lines
        // up with the file row's.
        QQuickItem *fileMore = TPFindItem(m_view->rootObject(), QStringLiteral("rowButton_more_1"));
        QVERIFY(fileMore);
        QQuickItem *chevron = TPFindItem(TPFindItem(m_view->rootObject(), QStringLiteral("row0")),
                                         QStringLiteral("rowChevron"));
        QVERIFY(chevron && chevron->width() > 0);
        QCOMPARE(more->mapToScene(QPointF(more->width(), 0)).x(),
                 chevron->mapToScene(QPointF()).x());
        QCOMPARE(chevron->mapToScene(QPointF(chevron->width(), 0)).x(),
                 fileMore->mapToScene(QPointF(fileMore->width(), 0)).x());
        QCOMPARE(run->mapToScene(QPointF(run->width(), 0)).x(),
                 fileMore->mapToScene(QPointF()).x());
        QTest::mouseClick(m_view.get(), Qt::LeftButton, {}, TPCentreOf(more));
        QTRY_COMPARE(m_fixture.actionTitles(),
                     QStringList({u8"Đổi tên", u8"Xoá", u8"Di chuyển…", u8"Huỷ"}));
    }

    void aLongPressOnARowOpensItsMenu()
    {
        TPScriptsListVC *list = showList();
        QVERIFY(list);
        QTRY_VERIFY(!list->isReloading() && list->rows()->rowCount() == 2);
        // The press lands on the rows as they are laid out and drawn.
        m_view->grabWindow();
        QTRY_VERIFY(TPFindItem(m_view->rootObject(), QStringLiteral("row1")));
        const QPoint at =
            TPCentreOf(TPFindItem(m_view->rootObject(), QStringLiteral("row1"))) - QPoint(100, 0);
        QTest::mousePress(m_view.get(), Qt::LeftButton, {}, at);
        QTRY_COMPARE(m_fixture.actionTitles(),
                     QStringList({u8"Đổi tên", u8"Xoá", u8"Di chuyển…", u8"Nhân bản",
                                  u8"Thêm vào yêu thích", u8"Huỷ"}));
        QTest::mouseRelease(m_view.get(), Qt::LeftButton, {}, at);
        QCOMPARE(m_stack->depth(), 1);
    }

    void theRefreshButtonShowsActivityWhileReloading()
    {
        QQuickItem *refresh = showListReloadingSlowly();
        QVERIFY(refresh);
        QTRY_VERIFY(TPFindItem(m_view->rootObject(), QStringLiteral("refreshActivity")));
        QQuickItem *activity = TPFindItem(m_view->rootObject(), QStringLiteral("refreshActivity"));
        QTRY_VERIFY(activity->isVisible());
        QTRY_VERIFY(runningSpinner(activity));
        QVERIFY(refresh->isEnabled());
        // The spinner takes the glyph's place: neither the glyph nor the button's spoken
        // name shows under it, and the button keeps its width.
        const qreal reloadingWidth = refresh->width();
        const auto content = refresh->property("contentItem").value<QQuickItem *>();
        QCOMPARE(content->opacity(), 0.0);
        QTRY_VERIFY_WITH_TIMEOUT(!activity->isVisible(), 5000);
        QTRY_VERIFY(!runningSpinner(activity));
        QCOMPARE(content->opacity(), 1.0);
        QCOMPARE(refresh->width(), reloadingWidth);
    }

    // The spinner is drawn in the theme's grey, which stands out from the bar it sits on in
    // either appearance; the style's own dark grey all but vanished on the dark bar.
    void theSpinnerStandsOutOnTheBarInBothAppearances_data()
    {
        QTest::addColumn<TPTheme::Appearance>("appearance");
        QTest::newRow("light") << TPTheme::Appearance::Light;
        QTest::newRow("dark") << TPTheme::Appearance::Dark;
    }
    void theSpinnerStandsOutOnTheBarInBothAppearances()
    {
        QFETCH(TPTheme::Appearance, appearance);
        TPTheme *theme = TPTheme::shared();
        theme->setAppearance(appearance);
        const auto followPlatform =
            qScopeGuard([theme] { theme->setAppearance(TPTheme::Appearance::FollowPlatform); });
        QVERIFY(showListReloadingSlowly());
        QTRY_VERIFY(TPFindItem(m_view->rootObject(), QStringLiteral("refreshActivity")));
        QQuickItem *activity = TPFindItem(m_view->rootObject(), QStringLiteral("refreshActivity"));
        QTRY_VERIFY(runningSpinner(activity));
        const auto drawn = runningSpinner(activity)->property("contentItem").value<QQuickItem *>();
        QVERIFY(drawn);
        // The ring fills its place in the bar, as large as the glyph it stands in for.
        QCOMPARE_GE(drawn->width(), activity->width() - 4);
        const QColor pen = drawn->property("pen").value<QColor>();
        QVERIFY2(TPTheme::contrast(pen, theme->barBackground()) >= 3.0,
                 qPrintable(pen.name() + QLatin1Char(' ') + theme->barBackground().name()));
        QVERIFY(TPTheme::contrast(pen, theme->background()) >= 3.0);
        QVERIFY(TPTheme::contrast(pen, theme->groupedBackground()) >= 3.0);
    }

    void theBackButtonShowsThePreviousTitle()
    {
        auto *list = new TPScriptsListVC(QString());
        m_stack = std::make_unique<TPNavigationStack>(list, m_fixture.presenter.get());
        QVERIFY(showPage("Platform/NavigationView",
                         {{QStringLiteral("stack"), QVariant::fromValue(m_stack.get())}}));
        m_stack->setVisible(true);
        m_stack->pushViewController(new TPScriptsListVC(QStringLiteral("lib")));
        QQuickItem *back = TPFindItem(m_view->rootObject(), QStringLiteral("backButton"));
        QTRY_VERIFY(back->isVisible());
        QQuickItem *label = TPFindItem(back, QStringLiteral("barButtonLabel"));
        QTRY_COMPARE(label->property("text").toString(), QStringLiteral("Scripts"));
        QVERIFY(label->isVisible());
        // No room for it: only the chevron is left.
        m_view->resize(180, 600);
        QTRY_VERIFY(!label->isVisible());
    }

    void ctrlShiftFOpensTheSearchInAllFilesReadyToType()
    {
        auto *list = new TPScriptsListVC(QString());
        m_stack = std::make_unique<TPNavigationStack>(list, m_fixture.presenter.get());
        QVERIFY(showPage("Platform/NavigationView",
                         {{QStringLiteral("stack"), QVariant::fromValue(m_stack.get())}}));
        m_stack->setVisible(true);
        QTRY_VERIFY(TPFindItem(m_view->rootObject(), QStringLiteral("searchFilesButton")));
        QTest::keyClick(m_view.get(), Qt::Key_F, Qt::ControlModifier | Qt::ShiftModifier);
        QTRY_VERIFY(qobject_cast<TPSearchVC *>(m_stack->topViewController()));
        auto *search = qobject_cast<TPSearchVC *>(m_stack->topViewController());
        QQuickItem *field = nullptr;
        QTRY_VERIFY(
            (field = TPFindItem(m_view->rootObject(), QStringLiteral("searchInFilesField"))));
        QTRY_VERIFY(field->hasActiveFocus());
        QTest::keyClick(m_view.get(), 't');
        QTest::keyClick(m_view.get(), 'a');
        QCOMPARE(search->query(), QStringLiteral("ta"));
        // The bar's button opens it too.
        m_stack->popViewController();
        QQuickItem *button = nullptr;
        QTRY_VERIFY(
            (button = TPFindItem(m_view->rootObject(), QStringLiteral("searchFilesButton"))) &&
            button->isVisible());
        QTest::mouseClick(m_view.get(), Qt::LeftButton, {}, TPCentreOf(button));
        QTRY_VERIFY(qobject_cast<TPSearchVC *>(m_stack->topViewController()));
    }

    void searchingNarrowsTheRowsAndClearingRestoresThem()
    {
        TPScriptsListVC *list = showList();
        QTRY_COMPARE(list->rows()->rowCount(), 2);
        QQuickItem *field = TPFindItem(m_view->rootObject(), QStringLiteral("searchField"));
        QVERIFY(field);
        QTest::mouseClick(m_view.get(), Qt::LeftButton, {}, TPCentreOf(field));
        QTest::keyClick(m_view.get(), 'M');
        QTRY_COMPARE(list->rows()->rowCount(), 1);
        QTest::keyClick(m_view.get(), Qt::Key_Backspace);
        QTRY_COMPARE(list->rows()->rowCount(), 2);
    }

    void anUnreachableNameShowsItsNote()
    {
        // The row's height follows its wrapped note without going round in a loop.
        QTest::failOnWarning(QRegularExpression(QStringLiteral("Binding loop")));
        m_fixture.serveListing("{\"entries\":[{\"path\":\"a b.lua\"}]}");
        QVERIFY(showList());
        QTRY_VERIFY(TPFindItem(m_view->rootObject(), QStringLiteral("row0")));
        QQuickItem *row = TPFindItem(m_view->rootObject(), QStringLiteral("row0"));
        QQuickItem *note = TPFindItem(row, QStringLiteral("unreachableNote"));
        QVERIFY(note && note->isVisible());
        // On a phone the note is shown whole: wrapped, never cut, and inside its row.
        QCOMPARE(m_view->width(), 390);
        QCOMPARE(note->property("text").toString(), TPL("row_unreachable"));
        QVERIFY(!note->property("truncated").toBool());
        QVERIFY(note->property("lineCount").toInt() >= 2);
        // Once the row is laid out (its layout places its parts when it is polished).
        const auto noteBottom = [note, row] {
            return note->mapRectToItem(row, QRectF(0, 0, note->width(), note->height())).bottom();
        };
        QTRY_VERIFY2(noteBottom() <= row->height(),
                     qPrintable(QStringLiteral("%1 > %2").arg(noteBottom()).arg(row->height())));
        QVERIFY(row->height() >= 60);
    }

    void anOrdinaryRowIs44High()
    {
        QVERIFY(showList());
        QTRY_VERIFY(TPFindItem(m_view->rootObject(), QStringLiteral("row1")));
        QCOMPARE(TPFindItem(m_view->rootObject(), QStringLiteral("row0"))->height(), 44.0);
        QCOMPARE(TPFindItem(m_view->rootObject(), QStringLiteral("row1"))->height(), 44.0);
    }

    void theAddSheetHasCancelOnAPhoneAndIsAPopoverOnAWideWindow()
    {
        QVERIFY(showPage("Platform/AlertHost", {{QStringLiteral("presenter"),
                                                 QVariant::fromValue(m_fixture.presenter.get())}}));
        TPScriptsListVC list{QString()};
        list.setPresenter(m_fixture.presenter.get());
        list.onAddTapped(m_view->rootObject());
        QQuickItem *cancel = nullptr;
        QTRY_VERIFY((cancel = TPFindItem(m_view->rootObject(), QStringLiteral("sheetAction2"))));
        QTRY_VERIFY(cancel->isVisible());
        m_view->resize(900, 700);
        QTRY_VERIFY(!cancel->isVisible());
        m_view->resize(390, 700);
        QTRY_VERIFY(cancel->isVisible());
        QTest::mouseClick(m_view.get(), Qt::LeftButton, {}, TPCentreOf(cancel));
        QTRY_COMPARE(m_fixture.alert(), nullptr);
    }

    // A tap beside a popover closes it, and the view, which reads the popover's anchor,
    // reads nothing of the alert that is gone.
    void aTapBesideAPopoverClosesItWithoutAWarning()
    {
        QTest::failOnWarning(QRegularExpression(QStringLiteral(".")));
        QVERIFY(showPage("Platform/AlertHost", {{QStringLiteral("presenter"),
                                                 QVariant::fromValue(m_fixture.presenter.get())}}));
        m_view->resize(900, 700);
        TPScriptsListVC list{QString()};
        list.setPresenter(m_fixture.presenter.get());
        list.onAddTapped(m_view->rootObject());
        QTRY_VERIFY(m_fixture.presenter->currentIsPopover());
        QTRY_VERIFY(TPFindShownItem(m_view->rootObject(), QStringLiteral("sheetAction0")));
        QTest::mouseClick(m_view.get(), Qt::LeftButton, {}, QPoint(20, 650));
        QTRY_COMPARE(m_fixture.alert(), nullptr);
    }

    void escapeOnASheetCancelsItAndReturnChoosesNothing()
    {
        QVERIFY(showPage("Platform/AlertHost", {{QStringLiteral("presenter"),
                                                 QVariant::fromValue(m_fixture.presenter.get())}}));
        TPScriptsListVC list{QString()};
        list.setPresenter(m_fixture.presenter.get());
        list.onAddTapped();
        QTRY_VERIFY(TPFindShownItem(m_view->rootObject(), QStringLiteral("sheetAction0")));
        QTest::keyClick(m_view.get(), Qt::Key_Return);
        QCOMPARE(m_fixture.alertText(), QStringLiteral("|"));
        QTest::keyClick(m_view.get(), Qt::Key_Escape);
        // Cancelled: no name prompt follows.
        QCOMPARE(m_fixture.alert(), nullptr);
    }

    // Return in a confirmation answers Cancel, its default: a key pressed by habit never
    // replaces a file.
    void returnOnAConfirmationCancels()
    {
        QVERIFY(showPage("Platform/AlertHost", {{QStringLiteral("presenter"),
                                                 QVariant::fromValue(m_fixture.presenter.get())}}));
        TPScriptsListVC list{QString()};
        list.setPresenter(m_fixture.presenter.get());
        bool replaced = false;
        list.confirm(QStringLiteral("Replace?"), QStringLiteral("Replace"),
                     [&replaced] { replaced = true; });
        QTRY_VERIFY(TPFindShownItem(m_view->rootObject(), QStringLiteral("alertBox")));
        QTest::keyClick(m_view.get(), Qt::Key_Return);
        QCOMPARE(m_fixture.alert(), nullptr);
        QVERIFY(!replaced);
    }

    // After a delete, the bar at the bottom of the list says what went and brings it back.
    // It is made only while it is offered.
    void theUndoBarTellsOfTheDeleteAndItsUndoBringsTheFileBack()
    {
        m_fixture.engine->setResponder([](const TPRecordedRequest &request) {
            if (request.path == QLatin1String("/scripts"))
                return TPScriptedAnswer::ok(kListing);
            return TPScriptedAnswer::ok(request.method == "GET" ? "kept\r\n" : "");
        });
        TPScriptsListVC *list = showList();
        QVERIFY(list);
        QTRY_VERIFY(TPFindItem(m_view->rootObject(), QStringLiteral("row1")));
        QVERIFY(!TPFindItem(m_view->rootObject(), QStringLiteral("undoBar")));
        list->commitDeleteRow(1);
        QTRY_VERIFY(TPFindShownItem(m_view->rootObject(), QStringLiteral("undoBar")));
        const QPointer<QQuickItem> bar =
            TPFindItem(m_view->rootObject(), QStringLiteral("undoBar"));
        QCOMPARE(TPFindItem(bar, QStringLiteral("undoBarText"))->property("text").toString(),
                 QString::fromUtf8("Đã xoá main.lua"));
        // At the bottom, across the list.
        QCOMPARE(bar->mapToScene(QPointF(0, bar->height())).y(), m_view->height() - 8.0);
        m_fixture.engine->clearRequests();
        QQuickItem *undo = TPFindItem(bar, QStringLiteral("undoBarButton"));
        QVERIFY(TPTouchTargetFaults(bar).isEmpty());
        QTest::mouseClick(m_view.get(), Qt::LeftButton, {}, TPCentreOf(undo));
        QTRY_COMPARE(m_fixture.requestsTo(QStringLiteral("/script")).size(), 2);
        QCOMPARE(m_fixture.requestsTo(QStringLiteral("/script")).last().body,
                 QByteArray("kept\r\n"));
        QTRY_VERIFY(!bar);
    }

    // A desktop or tablet window does not stretch rows across its width: the list, its
    // search field, the settings table and the tabs keep a readable width in the middle.
    void aWideWindowKeepsTheListAndTheSettingsAtAReadableWidth()
    {
        const qreal readable = TPTheme::shared()->readableWidth();
        const QSize wide(1200, 700);
        const qreal left = (wide.width() - readable) / 2;
        const qreal right = left + readable;
        const auto horizontalSpan = [](const QQuickItem *item) {
            const QRectF area = item->mapRectToScene(QRectF(0, 0, item->width(), item->height()));
            return std::pair(area.left(), area.right());
        };
        const auto within = [&](const QString &name) {
            QQuickItem *item = TPFindShownItem(m_view->rootObject(), name);
            if (!item)
                return name + QStringLiteral(" not shown");
            const auto [from, to] = horizontalSpan(item);
            return from >= left && to <= right
                       ? QString()
                       : QStringLiteral("%1 spans %2..%3").arg(name).arg(from).arg(to);
        };

        m_stack = std::make_unique<TPNavigationStack>(new TPScriptsListVC(QString()),
                                                      m_fixture.presenter.get());
        m_stack->setVisible(true);
        QVERIFY(showPage(
            "Scripts/ScriptsListPage",
            {{QStringLiteral("controller"), QVariant::fromValue(m_stack->topViewController())}},
            wide));
        QTRY_VERIFY(TPFindShownItem(m_view->rootObject(), QStringLiteral("rowButton_more_1")));
        for (const QString &name :
             {QStringLiteral("searchField"), QStringLiteral("rowLabel"),
              QStringLiteral("rowButton_more_1"), QStringLiteral("rowButton_run_1")})
            QCOMPARE(within(name), QString());

        TPSettingsVC settings;
        settings.setPresenter(m_fixture.presenter.get());
        settings.loadViewIfNeeded();
        settings.viewWillAppear();
        QVERIFY(showPage("Settings/SettingsPage",
                         {{QStringLiteral("controller"), QVariant::fromValue(&settings)}}, wide));
        QTRY_VERIFY(TPFindShownItem(m_view->rootObject(), QStringLiteral("switch0")));
        for (const QString &name : {QStringLiteral("switch0"), QStringLiteral("detail"),
                                    QStringLiteral("segments_langCell")})
            QCOMPARE(within(name), QString());
        QVERIFY(TPTouchTargetFaults(m_view->rootObject()).isEmpty());
    }

    // A launch builds the first tab's screens only; another tab's are built the first time
    // it is shown, and kept when the user goes back.
    void aTabsScreensAreBuiltWhenItIsFirstShown()
    {
        QVERIFY(TPWriteOwnerFile(QStringLiteral("Tester")));
        AppDelegate app;
        app.didFinishLaunching();
        QVERIFY(app.tabBarController());
        QVERIFY(showPage("Platform/TabsView",
                         {{QStringLiteral("tabs"), QVariant::fromValue(app.tabBarController())}}));
        QTRY_VERIFY(TPFindShownItem(m_view->rootObject(), QStringLiteral("scriptsList")));
        QVERIFY(!TPFindItem(m_view->rootObject(), QStringLiteral("settingsTable")));
        QVERIFY(!TPFindItem(m_view->rootObject(), QStringLiteral("storeLabel")));
        QTest::mouseClick(m_view.get(), Qt::LeftButton, {},
                          TPCentreOf(TPFindItem(m_view->rootObject(), QStringLiteral("tab2"))));
        QTRY_VERIFY(TPFindShownItem(m_view->rootObject(), QStringLiteral("settingsTable")));
        QVERIFY(!TPFindItem(m_view->rootObject(), QStringLiteral("storeLabel")));
        QQuickItem *settings = TPFindItem(m_view->rootObject(), QStringLiteral("settingsTable"));
        QTest::mouseClick(m_view.get(), Qt::LeftButton, {},
                          TPCentreOf(TPFindItem(m_view->rootObject(), QStringLiteral("tab0"))));
        QTRY_VERIFY(!settings->isVisible());
        QCOMPARE(TPFindItem(m_view->rootObject(), QStringLiteral("settingsTable")), settings);
        QVERIFY(TPFindShownItem(m_view->rootObject(), QStringLiteral("scriptsList")));
        // The view goes before the delegate whose tabs it shows, as in the app.
        m_view.reset();
    }

    void swipingFolderRowRevealsNothing()
    {
        QVERIFY(showList());
        QTRY_VERIFY(TPFindItem(m_view->rootObject(), QStringLiteral("row0")));
        QQuickItem *folderRow = TPFindItem(m_view->rootObject(), QStringLiteral("row0"));
        const QPoint start = TPCentreOf(folderRow) - QPoint(20, 0);
        drag(m_view.get(), start, start - QPoint(200, 0));
        QCOMPARE(swipePosition(folderRow), 0.0);
        QCOMPARE(m_fixture.requestsTo(QStringLiteral("/script")).size(), 0);
    }

    void tappingFolderRowOpensIt()
    {
        QVERIFY(showList());
        QTRY_VERIFY(TPFindItem(m_view->rootObject(), QStringLiteral("row0")));
        QTest::mouseClick(m_view.get(), Qt::LeftButton, {},
                          TPCentreOf(TPFindItem(m_view->rootObject(), QStringLiteral("row0"))));
        QTRY_COMPARE(m_stack->depth(), 2);
    }

    void pullingTheListDownRefreshesIt()
    {
        TPScriptsListVC *list = showList();
        QVERIFY(list);
        QTRY_COMPARE(list->rows()->rowCount(), 2);
        const int before = int(m_fixture.requestsTo(QStringLiteral("/scripts")).size());
        QQuickItem *listView = TPFindItem(m_view->rootObject(), QStringLiteral("scriptsList"));
        QVERIFY(listView);
        const QPoint top = listView->mapToScene(QPointF(195, 30)).toPoint();
        drag(m_view.get(), top, top + QPoint(0, 300));
        QTRY_COMPARE(m_fixture.requestsTo(QStringLiteral("/scripts")).size(), before + 1);
        QTRY_VERIFY(!list->isRefreshing());
    }

    void shortPullDoesNotRefresh()
    {
        TPScriptsListVC *list = showList();
        QTRY_COMPARE(list->rows()->rowCount(), 2);
        QQuickItem *listView = TPFindItem(m_view->rootObject(), QStringLiteral("scriptsList"));
        const QPoint top = listView->mapToScene(QPointF(195, 30)).toPoint();
        drag(m_view.get(), top, top + QPoint(0, 40));
        list->onRefreshTapped(); // a later listing: a refresh from the pull would come first
        QTRY_COMPARE(m_fixture.requestsTo(QStringLiteral("/scripts")).size(), 2);
    }

    // An alert's field sits under its title and message, clear of both, and inside the
    // alert.
    void anAlertsFieldSitsBelowItsTextsInsideTheAlert()
    {
        AppDelegate app;
        QVERIFY(showFirstRunPromptWithTheKeyboard(app));
        QQuickItem *root = m_view->rootObject();
        const auto sceneRect = [](QQuickItem *item) {
            return item->mapRectToScene(QRectF(0, 0, item->width(), item->height()));
        };
        QQuickItem *field = TPFindShownItem(root, QStringLiteral("alertTextField"));
        QQuickItem *box = TPFindShownItem(root, QStringLiteral("alertBox"));
        QVERIFY(field && box);
        int textsAbove = 0;
        for (const QString &name : {QStringLiteral("alertTitle"), QStringLiteral("alertMessage")}) {
            QQuickItem *text = TPFindShownItem(root, name);
            if (!text)
                continue;
            ++textsAbove;
            QTRY_VERIFY(text->height() > 0);
            QVERIFY2(sceneRect(field).top() >= sceneRect(text).bottom(),
                     qPrintable(QStringLiteral("the field's top %1 is above the bottom of %2, %3")
                                    .arg(sceneRect(field).top())
                                    .arg(name)
                                    .arg(sceneRect(text).bottom())));
        }
        QVERIFY(textsAbove > 0);
        QVERIFY(sceneRect(box).contains(sceneRect(field)));
    }

    // Rename selects a file's name without its extension, so typing replaces just the name;
    // a folder's whole name is selected.
    void renameSelectsTheNameWithoutItsExtension_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("selected");
        QTest::addColumn<QString>("afterTyping");
        QTest::newRow("file") << QStringLiteral("main.lua") << QStringLiteral("main")
                              << QStringLiteral("run.lua");
        QTest::newRow("folder") << QStringLiteral("lib") << QStringLiteral("lib")
                                << QStringLiteral("run");
    }
    void renameSelectsTheNameWithoutItsExtension()
    {
        QFETCH(QString, path);
        QFETCH(QString, selected);
        QFETCH(QString, afterTyping);
        auto *list = new TPScriptsListVC(QString());
        m_stack = std::make_unique<TPNavigationStack>(list, m_fixture.presenter.get());
        m_stack->setVisible(true);
        QTRY_COMPARE(list->rows()->rowCount(), 2);
        QVERIFY(showPage("Platform/AlertHost", {{QStringLiteral("presenter"),
                                                 QVariant::fromValue(m_fixture.presenter.get())}}));
        list->promptRenameForPath(path);
        QQuickItem *field = TPFindItem(m_view->rootObject(), QStringLiteral("alertTextField"));
        QVERIFY(field);
        QTRY_VERIFY(field->hasActiveFocus());
        QCOMPARE(field->property("selectedText").toString(), selected);
        for (const char key : {'r', 'u', 'n'})
            QTest::keyClick(m_view.get(), key);
        QTRY_COMPARE(m_fixture.alert()->text(), afterTyping);
    }

    // The device name is typed as it stands but capitalised as a name: the keyboard hints
    // of the prompt's field follow the alert's.
    void theFirstRunPromptsFieldIsNotCorrectedButCapitalised()
    {
        AppDelegate app;
        QVERIFY(showFirstRunPromptWithTheKeyboard(app));
        QQuickItem *field = TPFindItem(m_view->rootObject(), QStringLiteral("alertTextField"));
        QCOMPARE(field->inputMethodQuery(Qt::ImHints).toInt(), int(Qt::ImhNoPredictiveText));
    }

    // Search text is typed as it stands, neither corrected nor capitalised, and its clear
    // button leaves the focus (and the keyboard) in the field.
    void theSearchFieldTypesVerbatimAndClearingKeepsItsFocus()
    {
        TPScriptsListVC *list = showList();
        QVERIFY(list);
        QQuickItem *search = nullptr;
        QTRY_VERIFY(
            (search = TPFindShownItem(m_view->rootObject(), QStringLiteral("searchField"))));
        QCOMPARE(search->inputMethodQuery(Qt::ImHints).toInt(),
                 int(Qt::ImhNoAutoUppercase | Qt::ImhNoPredictiveText));
        QTest::mouseClick(m_view.get(), Qt::LeftButton, {}, TPCentreOf(search));
        QTRY_VERIFY(search->hasActiveFocus());
        QTest::keyClick(m_view.get(), Qt::Key_M);
        QTest::keyClick(m_view.get(), Qt::Key_A);
        QCOMPARE(list->searchText(), QStringLiteral("ma"));
        QQuickItem *clear =
            TPFindShownItem(m_view->rootObject(), QStringLiteral("clearSearchButton"));
        QVERIFY(clear);
        QCOMPARE(clear->property("focusPolicy").toInt(), int(Qt::NoFocus));
        QTest::mouseClick(m_view.get(), Qt::LeftButton, {}, TPCentreOf(clear));
        QTRY_COMPARE(list->searchText(), QString());
        QVERIFY(search->hasActiveFocus());
    }

    void typingIntoTheFirstRunPromptFollowsTheTrimmedText()
    {
        AppDelegate app;
        QVERIFY(showFirstRunPromptWithTheKeyboard(app));
        QTest::keyClick(m_view.get(), Qt::Key_Space);
        QTest::keyClick(m_view.get(), Qt::Key_Space);
        QCOMPARE(app.presenter()->current()->text(), QStringLiteral("  "));
        QVERIFY(!app.ownerSaveAction()->isEnabled());
        QTest::keyClick(m_view.get(), Qt::Key_T);
        QVERIFY(app.ownerSaveAction()->isEnabled());
        QTest::keyClick(m_view.get(), Qt::Key_Backspace);
        QVERIFY(!app.ownerSaveAction()->isEnabled());
        QQuickItem *save = TPFindItem(m_view->rootObject(), QStringLiteral("alertAction0"));
        QVERIFY(save && !save->isEnabled());
    }

    // A search that matches nothing says "No matches" in the current language, and the
    // field's clear button empties the search and brings every row back.
    void aSearchWithoutMatchesSaysSoAndTheClearButtonEmptiesIt()
    {
        TPScriptsListVC *list = showList();
        QVERIFY(list);
        QTRY_COMPARE(list->rows()->rowCount(), 2);
        QQuickItem *field = TPFindItem(m_view->rootObject(), QStringLiteral("searchField"));
        QVERIFY(field);
        QQuickItem *noMatches = TPFindItem(m_view->rootObject(), QStringLiteral("noMatches"));
        QVERIFY(noMatches && !noMatches->isVisible());
        QQuickItem *clear = TPFindItem(m_view->rootObject(), QStringLiteral("clearSearchButton"));
        QVERIFY(clear && !clear->isVisible());
        QTest::mouseClick(m_view.get(), Qt::LeftButton, {}, TPCentreOf(field));
        for (const char key : {'z', 'z', 'z'})
            QTest::keyClick(m_view.get(), key);
        QTRY_COMPARE(list->rows()->rowCount(), 0);
        QTRY_VERIFY(noMatches->isVisible());
        QCOMPARE(noMatches->property("text").toString(), QString::fromUtf8("Không có kết quả"));
        QVERIFY(clear->isVisible());
        QVERIFY(clear->width() >= 44 && clear->height() >= 44);
        QTest::mouseClick(m_view.get(), Qt::LeftButton, {}, TPCentreOf(clear));
        QTRY_COMPARE(list->rows()->rowCount(), 2);
        QCOMPARE(field->property("text").toString(), QString());
        QVERIFY(!noMatches->isVisible());
    }

    // Return in a prompt's field submits its default action, as the platform's keyboard
    // does, and only when that action is enabled.
    void returnInThePromptSubmitsItsDefaultAction()
    {
        AppDelegate app;
        QVERIFY(showFirstRunPromptWithTheKeyboard(app));
        QTest::keyClick(m_view.get(), Qt::Key_Return);
        QVERIFY(app.presenter()->current());
        QTest::keyClick(m_view.get(), Qt::Key_T);
        QTest::keyClick(m_view.get(), Qt::Key_Return);
        QTRY_COMPARE(app.presenter()->current(), nullptr);
        QCOMPARE(TPReadOwnerFile(), QStringLiteral("t"));
    }

    // The slider's filled and empty parts take the theme's colours, which contrast in both
    // appearances (checked with the theme).
    void theSliderIsDrawnInTheThemesColours()
    {
        TPSliderCell cell;
        cell.configureWithTitle(QStringLiteral("Size"), 8, 120, 44);
        QVERIFY(showPage("Settings/SliderRow",
                         {{QStringLiteral("cell"), QVariant::fromValue(&cell)}}, QSize(390, 72)));
        QQuickItem *track = TPFindItem(m_view->rootObject(), QStringLiteral("sliderTrack"));
        QQuickItem *fill = TPFindItem(m_view->rootObject(), QStringLiteral("sliderFill"));
        QVERIFY(track && fill);
        QCOMPARE(track->property("color").value<QColor>(), TPTheme::shared()->switchOff());
        QCOMPARE(fill->property("color").value<QColor>(), TPTheme::shared()->tint());
        QTRY_VERIFY(fill->width() > 0 && fill->width() < track->width());
    }

    // A tap on a swatch, at its middle or at its far edge, picks that swatch: each answers
    // a finger in its own tile of the row, the outer ones too.
    void tappingASwatchOrJustBesideItPicksIt()
    {
        TPSwatchCell cell;
        QList<quint32> picks;
        cell.setOnPick([&picks](quint32 rgb) { picks.append(rgb); });
        // The row inside a phone's grouped cell: 390 less the cell's 16-point insets.
        QVERIFY(showPage("Settings/SwatchRow",
                         {{QStringLiteral("cell"), QVariant::fromValue(&cell)}}, QSize(358, 56)));
        QTRY_VERIFY(TPFindShownItem(m_view->rootObject(), QStringLiteral("swatch7")));
        QVERIFY(TPTouchTargetFaults(m_view->rootObject()).isEmpty());
        // Where the swatches are drawn; a pick redraws them in the same places.
        QHash<int, QPoint> centres;
        for (int index : {0, 3, 7}) {
            centres.insert(index,
                           TPCentreOf(TPFindShownItem(m_view->rootObject(),
                                                      QStringLiteral("swatch%1").arg(index))));
        }
        const auto tapAt = [&](int index, int dx) {
            QTest::mouseClick(m_view.get(), Qt::LeftButton, {},
                              centres.value(index) + QPoint(dx, 0));
        };
        tapAt(7, 0);
        tapAt(0, -14);
        tapAt(7, 14);
        tapAt(3, 0);
        QTRY_COMPARE(picks, (QList<quint32>{0x000000, 0xFF3B30, 0x000000, 0x34C759}));
        QCOMPARE(cell.buttonStates().at(3).borderWidth, 3);
    }

    // With touch debugging on, the selected swatch shows its check mark, and under the
    // marker rows the marker shows in the stored colour, size and opacity.
    void theSelectedSwatchIsCheckedAndTheMarkerIsPreviewed()
    {
        QSettings().setValue(QStringLiteral("tp_debug_touch"), true);
        QSettings().setValue(QStringLiteral("tp_touch_color"), 0xFFCC00);
        QSettings().setValue(QStringLiteral("tp_touch_size"), 80);
        QSettings().setValue(QStringLiteral("tp_touch_opacity"), 35);
        TPSettingsVC settings;
        settings.setPresenter(m_fixture.presenter.get());
        settings.loadViewIfNeeded();
        settings.viewWillAppear();
        QVERIFY(showPage("Settings/SettingsPage",
                         {{QStringLiteral("controller"), QVariant::fromValue(&settings)}},
                         QSize(390, 1400)));
        QQuickItem *root = m_view->rootObject();
        QTRY_VERIFY(TPFindShownItem(root, QStringLiteral("swatch2")));
        for (int index = 0; index < 8; ++index) {
            QCOMPARE(bool(TPFindShownItem(root, QStringLiteral("swatchCheck%1").arg(index))),
                     index == 2);
        }
        QQuickItem *marker = TPFindShownItem(root, QStringLiteral("markerPreview"));
        QVERIFY(marker);
        QCOMPARE(marker->width(), 80.0);
        QCOMPARE(marker->height(), 80.0);
        QCOMPARE(marker->opacity(), 0.35);
        QCOMPARE(marker->property("color").value<QColor>(), QColor(0xFF, 0xCC, 0x00));
        // Under the opacity row, above the toast position's.
        QQuickItem *opacityRow = TPFindShownItem(root, QStringLiteral("setting_opacityCell_7"));
        QQuickItem *toastRow = TPFindShownItem(root, QStringLiteral("setting_segCell_8"));
        QVERIFY(opacityRow && toastRow);
        const QRectF markerRect = marker->mapRectToScene(marker->boundingRect());
        QVERIFY(markerRect.top() > opacityRow->mapToScene(QPointF(0, 72)).y());
        QVERIFY(markerRect.bottom() < toastRow->mapToScene(QPointF()).y());
        QCOMPARE(toastRow->height(), 44.0);
    }

    void sliderDragReportsOnceOnRelease()
    {
        TPSliderCell cell;
        cell.configureWithTitle(QStringLiteral("Size"), 8, 120, 44);
        QList<qint64> reports;
        cell.setOnChanged([&reports](qint64 value) { reports.append(value); });
        QVERIFY(showPage("Settings/SliderRow",
                         {{QStringLiteral("cell"), QVariant::fromValue(&cell)}}, QSize(390, 72)));
        QQuickItem *slider = TPFindItem(m_view->rootObject(), QStringLiteral("slider"));
        QVERIFY(slider);
        QTRY_VERIFY(slider->width() > 100);
        const QPoint from =
            slider->mapToScene(QPointF(slider->width() * 0.3, slider->height() / 2)).toPoint();
        const QPoint to =
            slider->mapToScene(QPointF(slider->width() * 0.7, slider->height() / 2)).toPoint();
        QTest::mousePress(m_view.get(), Qt::LeftButton, {}, from);
        for (int step = 1; step <= 10; ++step)
            QTest::mouseMove(m_view.get(), from + (to - from) * step / 10, 16);
        QVERIFY(reports.isEmpty());
        const QString duringDrag = cell.valueText();
        QVERIFY(duringDrag != QStringLiteral("44"));
        QTest::mouseRelease(m_view.get(), Qt::LeftButton, {}, to, 16);
        QTRY_COMPARE(reports.size(), 1);
        QCOMPARE(QString::number(reports.first()), cell.valueText());
        QCOMPARE(cell.value(), float(reports.first()));
    }

    void sliderReleasedOutsideStillReports()
    {
        TPSliderCell cell;
        cell.configureWithTitle(QStringLiteral("Opacity"), 5, 100, 60, QStringLiteral("%"));
        QList<qint64> reports;
        cell.setOnChanged([&reports](qint64 value) { reports.append(value); });
        // The row is 72 points high in a taller window: the finger lifts below the slider.
        QVERIFY(showPage("Settings/SliderRow",
                         {{QStringLiteral("cell"), QVariant::fromValue(&cell)}}, QSize(390, 72)));
        m_view->setResizeMode(QQuickView::SizeViewToRootObject);
        m_view->resize(390, 300);
        QQuickItem *slider = TPFindItem(m_view->rootObject(), QStringLiteral("slider"));
        QTRY_VERIFY(slider->width() > 100);
        const QPoint from =
            slider->mapToScene(QPointF(slider->width() * 0.5, slider->height() / 2)).toPoint();
        const QPoint outside(m_view->width() - 2, 200);
        QVERIFY(!slider->contains(slider->mapFromScene(outside)));
        drag(m_view.get(), from, outside);
        QTRY_COMPARE(reports, QList<qint64>({100}));
        QCOMPARE(cell.valueText(), QStringLiteral("100%"));
    }
};

QTEST_MAIN(TestViews)
#include "tst_views.moc"
