#include "foundation/tpdeviceaddress.h"
#include "foundation/tplang.h"
#include "foundation/tpnotificationcenter.h"
#include "settings/tpsettingsstore.h"
#include "settings/tpsettingsvc.h"
#include "tpscreenfixture.h"

#include "tptestutil.h"

#include <QClipboard>
#include <QDesktopServices>
#include <QFile>
#include <QGuiApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSettings>
#include <QSignalSpy>
#include <QTest>

#include <arpa/inet.h>
#include <netinet/in.h>

// Catches the URLs the app asks the system to open.
class UrlCatcher : public QObject
{
    Q_OBJECT
public:
    QList<QUrl> opened;
public slots:
    void open(const QUrl &url) { opened.append(url); }
};

class TestTPSettingsVC : public QObject
{
    Q_OBJECT

    TPScreenFixture m_fixture{"tst_tpsettingsvc"};
    std::unique_ptr<TPSettingsVC> m_settings;
    UrlCatcher m_urls;

    TPSettingsVC *show()
    {
        m_settings = std::make_unique<TPSettingsVC>();
        m_settings->setPresenter(m_fixture.presenter.get());
        m_settings->loadViewIfNeeded();
        m_settings->viewWillAppear();
        return m_settings.get();
    }

    void useInterfaces(const QList<TPInterfaceEntry> &interfaces)
    {
        TPSetInterfaceSource([interfaces] { return interfaces; });
    }

    QList<TPSettingsRow> section(int index) const
    {
        QList<TPSettingsRow> rows;
        for (const TPSettingsRow &row : m_settings->rowsModel()->rows()) {
            if (row.section == index)
                rows.append(row);
        }
        return rows;
    }

    QJsonObject lastDocument() const
    {
        const auto posts = m_fixture.requestsTo(QStringLiteral("/settings"));
        return posts.isEmpty() ? QJsonObject()
                               : QJsonDocument::fromJson(posts.last().body).object();
    }

    QString ownerFile() const
    {
        return m_fixture.ownerDir->filePath(QStringLiteral("jb/var/tmp/tapper_owner.txt"));
    }

private slots:
    void initTestCase()
    {
        QDesktopServices::setUrlHandler(QStringLiteral("http"), &m_urls, "open");
    }
    void cleanupTestCase() { QDesktopServices::unsetUrlHandler(QStringLiteral("http")); }
    void init()
    {
        QVERIFY(m_fixture.setUp());
        m_urls.opened.clear();
        useInterfaces({TPIPv4Interface("lo0", "127.0.0.1"), TPIPv4Interface("pdp_ip0", "10.0.0.5"),
                       TPIPv4Interface("en0", "192.168.1.23")});
    }
    void cleanup()
    {
        m_settings.reset();
        TPSetInterfaceSource({});
    }

    // A new address (another Wi-Fi network) shows as soon as the screen appears again, not
    // only after a language change.
    void theDeviceAddressIsReadAgainEachTimeTheScreenAppears()
    {
        TPSettingsVC *settings = show();
        QCOMPARE(section(0).first().detail, QStringLiteral("192.168.1.23:8090"));
        useInterfaces({TPIPv4Interface("en0", "192.168.7.9")});
        settings->viewWillDisappear();
        QCOMPARE(section(0).first().detail, QStringLiteral("192.168.1.23:8090"));
        settings->viewWillAppear();
        QCOMPARE(section(0).first().detail, QStringLiteral("192.168.7.9:8090"));
    }

    void tableHasThreeTitledSections()
    {
        TPSettingsVC *settings = show();
        QCOMPARE(settings->title(), QString::fromUtf8("Cài đặt"));
        QCOMPARE(settings->numberOfSections(), 3);
        QCOMPARE(settings->titleForHeaderInSection(0), QString::fromUtf8("Kết nối"));
        QCOMPARE(settings->titleForHeaderInSection(1), QString::fromUtf8("Ngôn ngữ"));
        QCOMPARE(settings->titleForHeaderInSection(2), QString::fromUtf8("Tuỳ chọn"));
        QCOMPARE(settings->numberOfRowsInSection(0), 3);
        QCOMPARE(settings->numberOfRowsInSection(1), 1);
        QCOMPARE(section(0).size(), 3);
        QCOMPARE(section(0).at(1).detail, QStringLiteral("N/A"));
        QVERIFY(section(0).at(1).disclosure);
        QVERIFY(section(0).at(2).disclosure);
        QVERIFY(!section(0).at(0).disclosure);
    }

    void debugTouchOffGivesSixOptionRowsEndingWithToastPosition()
    {
        TPSettingsVC *settings = show();
        QCOMPARE(settings->numberOfRowsInSection(2), 6);
        const QList<TPSettingsRow> options = section(2);
        QCOMPARE(options.size(), 6);
        QCOMPARE(options.at(5).identifier, QStringLiteral("segCell"));
        QCOMPARE(options.at(5).height, 44);
        QCOMPARE(settings->heightForRow(2, 5), 44);
        for (int row = 0; row < 5; ++row) {
            QCOMPARE(options.at(row).identifier, QStringLiteral("switchCell"));
            QCOMPARE(options.at(row).tag, row);
        }
        QCOMPARE(options.at(4).title, QString::fromUtf8("Hiện điểm chạm (debug)"));
    }

    void turningDebugTouchOnSendsItAndShowsTheMarkerRows()
    {
        TPSettingsVC *settings = show();
        QSignalSpy inserted(settings->rowsModel(), &QAbstractItemModel::rowsInserted);
        settings->onSwitchChanged(4, true);
        QVERIFY(QSettings().value(QStringLiteral("tp_debug_touch")).toBool());
        QTRY_COMPARE(m_fixture.requestsTo(QStringLiteral("/settings")).size(), 1);
        QCOMPARE(lastDocument().value(QStringLiteral("tp_debug_touch")), QJsonValue(true));
        QVERIFY(inserted.count() >= 1);
        QCOMPARE(settings->numberOfRowsInSection(2), 9);
        const QList<TPSettingsRow> options = section(2);
        QCOMPARE(options.size(), 9);
        const QStringList kinds = {"switchCell", "switchCell",  "switchCell",
                                   "switchCell", "switchCell",  "swatchCell",
                                   "sizeCell",   "opacityCell", "segCell"};
        const QList<int> heights = {44, 44, 44, 44, 44, 56, 72, 72, 44};
        for (int row = 0; row < 9; ++row) {
            QCOMPARE(options.at(row).identifier, kinds.at(row));
            QCOMPARE(options.at(row).height, heights.at(row));
            QCOMPARE(settings->heightForRow(2, row), heights.at(row));
        }
        QCOMPARE(options.at(5).cell.data(), settings->swatchCell());
        QCOMPARE(settings->sizeCell()->valueText(), QStringLiteral("44"));
        QCOMPARE(settings->opacityCell()->valueText(), QStringLiteral("60%"));
        QCOMPARE(settings->sizeCell()->minimum(), 8.0f);
        QCOMPARE(settings->sizeCell()->maximum(), 120.0f);
        QCOMPARE(settings->opacityCell()->minimum(), 5.0f);
        QCOMPARE(settings->opacityCell()->maximum(), 100.0f);
        QCOMPARE(section(0).size(), 3); // the other sections stay as they were
    }

    void otherSwitchesStoreAndSendWithoutReloading()
    {
        TPSettingsVC *settings = show();
        QSignalSpy inserted(settings->rowsModel(), &QAbstractItemModel::rowsInserted);
        settings->onSwitchChanged(0, true);
        QTRY_COMPARE(m_fixture.requestsTo(QStringLiteral("/settings")).size(), 1);
        QCOMPARE(lastDocument().value(QStringLiteral("tp_alert_error")), QJsonValue(true));
        QCOMPARE(inserted.count(), 0);
    }

    void markerRowsStoreAndSendWhatTheUserPicks()
    {
        QSettings().setValue(QStringLiteral("tp_debug_touch"), true);
        TPSettingsVC *settings = show();
        settings->swatchCell()->onSwatchTapped(4);
        settings->sizeCell()->onSliderReleased(57.5f);
        settings->opacityCell()->onSliderReleased(33.2f);
        QTRY_COMPARE(m_fixture.requestsTo(QStringLiteral("/settings")).size(), 3);
        QCOMPARE(TPSettingsStore::currentTouchColorRGB(), 0x007AFFu);
        QCOMPARE(TPSettingsStore::currentTouchSize(), 58);
        QCOMPARE(TPSettingsStore::currentTouchOpacity(), 33);
        QCOMPARE(lastDocument().value(QStringLiteral("tp_touch_color")), QJsonValue(0x007AFF));
        QCOMPARE(lastDocument().value(QStringLiteral("tp_touch_size")), QJsonValue(58));
        QCOMPARE(lastDocument().value(QStringLiteral("tp_touch_opacity")), QJsonValue(33));
    }

    // Under the touch-marker rows, outside their described heights, the marker shows as the
    // settings make it, following the sliders while they move.
    void theMarkerPreviewFollowsColourSizeAndOpacity()
    {
        QSettings().setValue(QStringLiteral("tp_debug_touch"), true);
        TPSettingsVC *settings = show();
        TPMarkerPreview *preview = settings->markerPreview();
        QCOMPARE(preview->color(), QColor(0xFF, 0x3B, 0x30));
        QCOMPARE(preview->diameter(), 44.0);
        QCOMPARE(preview->opacity(), 0.6);
        settings->swatchCell()->onSwatchTapped(4);
        QCOMPARE(preview->color(), QColor(0x00, 0x7A, 0xFF));
        settings->sizeCell()->onSliderDragging(90.4f);
        QCOMPARE(preview->diameter(), 90.0);
        settings->sizeCell()->onSliderReleased(100.0f);
        QCOMPARE(preview->diameter(), 100.0);
        settings->opacityCell()->onSliderDragging(25.0f);
        QCOMPARE(preview->opacity(), 0.25);
        QVERIFY(preview->areaHeight() >= 120);
        // Only the last marker row carries it, and every row keeps its height.
        const QList<TPSettingsRow> &rows = settings->rowsModel()->rows();
        QStringList carriers;
        for (const TPSettingsRow &row : rows) {
            if (row.previewBelow)
                carriers.append(row.identifier);
            QCOMPARE(row.height, settings->heightForRow(row.section, row.row));
        }
        QCOMPARE(carriers, QStringList{QStringLiteral("opacityCell")});
        // Named for a screen reader in the app's language, which a change of language alone
        // renews.
        settings->opacityCell()->onSliderReleased(25.0f);
        QCOMPARE(preview->accessibleName(), QString::fromUtf8("Xem trước điểm chạm: 100 pt, 25%"));
        QSignalSpy named(preview, &TPMarkerPreview::changed);
        settings->onLangSegmentChanged(1);
        QCOMPARE(named.size(), 1);
        QCOMPARE(preview->accessibleName(), QStringLiteral("Touch marker preview: 100 pt, 25%"));
    }

    void handlerFiringAfterTheScreenIsGoneStoresButSendsNothing()
    {
        QSettings().setValue(QStringLiteral("tp_debug_touch"), true);
        // Building the rows gives the size row the screen's handler; the row outlives it.
        std::unique_ptr<TPSliderCell> row(show()->sizeCell());
        row->setParent(nullptr);
        m_settings.reset();
        row->onSliderReleased(99);
        QCOMPARE(QSettings().value(QStringLiteral("tp_touch_size")).toLongLong(), 99);
        show()->onToastPosChanged(1); // a later request: a post from the handler would be first
        QTRY_COMPARE(m_fixture.engine->requests().size(), 1);
        QCOMPARE(lastDocument().value(QStringLiteral("tp_toast_pos")), QJsonValue(1));
    }

    void toastPositionIsStoredAndSent()
    {
        TPSettingsVC *settings = show();
        settings->onToastPosChanged(1);
        QTRY_COMPARE(m_fixture.requestsTo(QStringLiteral("/settings")).size(), 1);
        QCOMPARE(lastDocument().value(QStringLiteral("tp_toast_pos")), QJsonValue(1));
    }

    void storedBottomToastPositionShowsBottomSelected()
    {
        QSettings().setValue(QStringLiteral("tp_toast_pos"), 2);
        show();
        const TPSettingsRow toast = section(2).last();
        QCOMPARE(toast.segments, QStringList({u8"Trên", u8"Giữa", u8"Dưới"}));
        QCOMPARE(toast.selectedSegment, 2);
        QCOMPARE(toast.segments.at(toast.selectedSegment), QString::fromUtf8("Dưới"));
    }

    void choosingEnglishStoresItBroadcastsAndRebuildsInEnglishWithoutSending()
    {
        TPSettingsVC *settings = show();
        QSignalSpy changed(TPNotificationCenter::defaultCenter(),
                           &TPNotificationCenter::TPLangChanged);
        settings->onLangSegmentChanged(1);
        QCOMPARE(QSettings().value(TPLangKey).toString(), QStringLiteral("en"));
        QCOMPARE(changed.count(), 1);
        QCOMPARE(settings->title(), QStringLiteral("Settings"));
        QCOMPARE(section(0).first().sectionTitle, QStringLiteral("Connection"));
        QCOMPARE(section(1).first().title, QStringLiteral("Display language"));
        QCOMPARE(section(1).first().segments, QStringList({"Vietnamese", "English"}));
        QCOMPARE(section(1).first().selectedSegment, 1);
        QCOMPARE(section(2).first().title, QStringLiteral("Alert on script error"));
        QCOMPARE(section(2).last().title, QStringLiteral("Toast Position"));
        settings->onToastPosChanged(0); // a later request: a settings post would be first
        QTRY_COMPARE(m_fixture.engine->requests().size(), 1);
    }

    void languageOtherThanEnglishShowsTheFirstSegment_data()
    {
        QTest::addColumn<QVariant>("stored");
        QTest::newRow("nothing") << QVariant();
        QTest::newRow("vi") << QVariant(QStringLiteral("vi"));
        QTest::newRow("other") << QVariant(QStringLiteral("fr"));
        QTest::newRow("EN") << QVariant(QStringLiteral("EN"));
    }
    void languageOtherThanEnglishShowsTheFirstSegment()
    {
        QFETCH(QVariant, stored);
        if (stored.isValid())
            QSettings().setValue(TPLangKey, stored);
        show();
        QCOMPARE(section(1).first().selectedSegment, 0);
    }

    void renamingWritesTheTypedNameAndRereadsTheRow()
    {
        TPSettingsVC *settings = show();
        settings->didSelectRow(0, 1);
        QCOMPARE(m_fixture.alert()->title(), QString::fromUtf8("Đổi tên máy"));
        QCOMPARE(m_fixture.alert()->placeholder(), QString::fromUtf8("Tên của bạn"));
        QVERIFY(!m_fixture.alert()->autocorrection());
        QCOMPARE(m_fixture.actionTitles(), QStringList({u8"Huỷ", u8"Lưu"}));
        m_fixture.alert()->setText(QStringLiteral("  Tavo "));
        m_fixture.alert()->triggerAction(1);
        QCOMPARE(TPReadFileBytes(ownerFile()), QByteArray("Tavo\n"));
        QCOMPARE(section(0).at(1).detail, QStringLiteral("Tavo"));
        settings->promptRenameOwner();
        QCOMPARE(m_fixture.alert()->text(), QStringLiteral("Tavo"));
    }

    void renamingWithOnlyBlanksWritesNothing()
    {
        TPSettingsVC *settings = show();
        QVERIFY(TPWriteOwnerFile(QStringLiteral("Old")));
        settings->promptRenameOwner();
        m_fixture.alert()->setText(QStringLiteral("   "));
        m_fixture.alert()->triggerAction(1);
        QCOMPARE(TPReadFileBytes(ownerFile()), QByteArray("Old\n"));
        QCOMPARE(m_fixture.alert(), nullptr);
    }

    void tappingLanguageOrOptionRowsDoesNothing()
    {
        TPSettingsVC *settings = show();
        QGuiApplication::clipboard()->setText(QStringLiteral("untouched"));
        settings->didSelectRow(1, 0);
        for (int row = 0; row < 6; ++row)
            settings->didSelectRow(2, row);
        QCOMPARE(m_fixture.alert(), nullptr);
        QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("untouched"));
        QVERIFY(m_urls.opened.isEmpty());
        settings->onToastPosChanged(0);
        QTRY_COMPARE(m_fixture.engine->requests().size(), 1);
        QCOMPARE(m_fixture.engine->requests().first().path, QStringLiteral("/settings"));
    }

    void wifiAddressRowShowsAddressAndPort()
    {
        show();
        QCOMPARE(TPDeviceIPPortString(), QStringLiteral("192.168.1.23:8090"));
        QCOMPARE(section(0).first().detail, QStringLiteral("192.168.1.23:8090"));
        QCOMPARE(section(0).first().title, QStringLiteral("Device IP"));
    }

    void rowsAreAnnouncedByTitleAndValue()
    {
        TPSettingsVC *settings = show();
        const TPSettingsRowsModel *rows = settings->rowsModel();
        const auto announced = [rows](int row) {
            return rows->data(rows->index(row), TPSettingsRowsModel::AccessibleNameRole).toString();
        };
        QCOMPARE(announced(0), QStringLiteral("Device IP, 192.168.1.23:8090"));
        QCOMPARE(announced(2), QStringLiteral("Mở Web IDE"));
    }

    void noWifiAddressShowsNotAvailable()
    {
        useInterfaces(
            {TPIPv4Interface("lo0", "127.0.0.1"), TPIPv4Interface("pdp_ip0", "10.0.0.5")});
        show();
        QCOMPARE(TPDeviceIPPortString(), QStringLiteral("N/A"));
        QCOMPARE(section(0).first().detail, QStringLiteral("N/A"));
    }

    void tappingAddressRowCopiesItAndConfirms()
    {
        TPSettingsVC *settings = show();
        settings->didSelectRow(0, 0);
        QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("192.168.1.23:8090"));
        QCOMPARE(m_fixture.alertText(), QString::fromUtf8("OK|Đã copy"));
        QCOMPARE(m_fixture.actionTitles(), QStringList({"OK"}));
    }

    void tappingAddressRowWithoutAddressCopiesNotAvailable()
    {
        useInterfaces({});
        TPSettingsVC *settings = show();
        settings->onDeviceIPRowTapped();
        QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("N/A"));
        QCOMPARE(m_fixture.alertText(), QString::fromUtf8("OK|Đã copy"));
    }

    void openingTheWebIdeOpensTheAddressOnTheEnginePort()
    {
        TPSettingsVC *settings = show();
        settings->didSelectRow(0, 2);
        QCOMPARE(m_urls.opened, QList<QUrl>({QUrl(QStringLiteral("http://192.168.1.23:8090"))}));
        QCOMPARE(m_fixture.alert(), nullptr);
    }

    void openingTheWebIdeWithoutAddressShowsError()
    {
        useInterfaces({TPIPv4Interface("lo0", "127.0.0.1")});
        TPSettingsVC *settings = show();
        settings->onOpenWebIDETapped();
        QCOMPARE(m_fixture.alertText(), QString::fromUtf8("Lỗi|N/A"));
        QVERIFY(m_urls.opened.isEmpty());
    }
};

QTEST_MAIN(TestTPSettingsVC)
#include "tst_tpsettingsvc.moc"
