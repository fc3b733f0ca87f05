#include "engine/tpengineapi.h"
#include "foundation/tplang.h"
#include "settings/tpsettingsstore.h"
#include "tpenginecalls.h"
#include "tprecordingengine.h"
#include "tptestutil.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QSettings>
#include <QStandardPaths>
#include <QTcpServer>
#include <QTest>

class TestTPSettingsStore : public QObject
{
    Q_OBJECT

    std::unique_ptr<TPRecordingEngine> m_engine;

    QList<QJsonObject> postedDocuments() const
    {
        QList<QJsonObject> documents;
        for (const TPRecordedRequest &request : m_engine->requests()) {
            if (request.path == QLatin1String("/settings"))
                documents.append(QJsonDocument::fromJson(request.body).object());
        }
        return documents;
    }

    static QJsonObject freshDocument()
    {
        return QJsonObject{
            {"tp_alert_error", false},     {"tp_vibrate_error", false},
            {"tp_toast_startstop", false}, {"tp_vibrate_startstop", false},
            {"tp_debug_touch", false},     {"tp_toast_pos", 0},
            {"tp_touch_color", 16726832},  {"tp_touch_size", 44},
            {"tp_touch_opacity", 60},
        };
    }

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        QCoreApplication::setOrganizationName(QStringLiteral("TPCompanionTests"));
        QCoreApplication::setApplicationName(QStringLiteral("tst_tpsettingsstore"));
    }
    void init()
    {
        QSettings().clear();
        m_engine = std::make_unique<TPRecordingEngine>();
        QVERIFY(m_engine->startAsTheEngine());
    }
    void cleanup() { m_engine.reset(); }

    void freshInstallSendsTheDefaultDocument()
    {
        QVERIFY(!TPSettingsStore::isDebugTouchOn());
        TPSettingsStore::postAllSettings();
        QTRY_COMPARE(postedDocuments().size(), 1);
        QCOMPARE(postedDocuments().first(), freshDocument());
    }

    void documentHasExactlyNineMembersOfTheirJsonTypes()
    {
        QSettings().setValue(TPLangKey, QStringLiteral("en"));
        TPSettingsStore::postAllSettings();
        QTRY_COMPARE(postedDocuments().size(), 1);
        const QByteArray body = m_engine->requests().first().body;
        const QJsonObject document = postedDocuments().first();
        QCOMPARE(document.size(), 9);
        QVERIFY(!document.contains(QStringLiteral("tp_lang")));
        for (const QString &key : TPSettingsStore::switchKeys())
            QVERIFY2(document.value(key).isBool(), qPrintable(key));
        // Integers travel as JSON integers, never as fractions or texts.
        QVERIFY(body.contains("\"tp_touch_color\":16726832"));
        QVERIFY(body.contains("\"tp_touch_size\":44"));
        QVERIFY(body.contains("\"tp_touch_opacity\":60"));
        QVERIFY(body.contains("\"tp_toast_pos\":0"));
        QVERIFY(body.contains("\"tp_alert_error\":false"));
    }

    void storedZeroIsKeptNotReplacedByTheDefault()
    {
        QSettings settings;
        settings.setValue(QStringLiteral("tp_touch_color"), 0);
        settings.setValue(QStringLiteral("tp_touch_size"), 0);
        settings.setValue(QStringLiteral("tp_touch_opacity"), 0);
        QCOMPARE(TPSettingsStore::currentTouchColorRGB(), 0u);
        QCOMPARE(TPSettingsStore::currentTouchSize(), 0);
        QCOMPARE(TPSettingsStore::currentTouchOpacity(), 0);
        TPSettingsStore::postAllSettings();
        QTRY_COMPARE(postedDocuments().size(), 1);
        const QJsonObject document = postedDocuments().first();
        QCOMPARE(document.value(QStringLiteral("tp_touch_color")), QJsonValue(0));
        QCOMPARE(document.value(QStringLiteral("tp_touch_size")), QJsonValue(0));
        QCOMPARE(document.value(QStringLiteral("tp_touch_opacity")), QJsonValue(0));
    }

    void storedSizeOutsideSliderRangeIsSentUnchanged()
    {
        QSettings().setValue(QStringLiteral("tp_touch_size"), 200);
        QCOMPARE(TPSettingsStore::currentTouchSize(), 200);
        TPSettingsStore::postAllSettings();
        QTRY_COMPARE(postedDocuments().size(), 1);
        QCOMPARE(postedDocuments().first().value(QStringLiteral("tp_touch_size")), QJsonValue(200));
    }

    void colourIsReadAsItsLow32Bits()
    {
        QSettings().setValue(QStringLiteral("tp_touch_color"), qint64(0x1FFFFFFFF));
        QCOMPARE(TPSettingsStore::currentTouchColorRGB(), 0xFFFFFFFFu);
        TPSettingsStore::storeTouchColorRGB(0xFFFFFFFFu);
        QCOMPARE(QSettings().value(QStringLiteral("tp_touch_color")).toLongLong(),
                 qint64(0xFFFFFFFF));
    }

    void togglingDebugTouchSendsItWithTheOtherEightUnchanged()
    {
        QSettings().setValue(QStringLiteral("tp_touch_size"), 90);
        QSettings().setValue(QStringLiteral("tp_alert_error"), true);
        TPSettingsStore::storeSwitch(QStringLiteral("tp_debug_touch"), true);
        TPSettingsStore::postAllSettings();
        QVERIFY(TPSettingsStore::isDebugTouchOn());
        QTRY_COMPARE(postedDocuments().size(), 1);
        QJsonObject expected = freshDocument();
        expected.insert(QStringLiteral("tp_debug_touch"), true);
        expected.insert(QStringLiteral("tp_touch_size"), 90);
        expected.insert(QStringLiteral("tp_alert_error"), true);
        QCOMPARE(postedDocuments().first(), expected);
    }

    void documentCarriesEveryStoredValue()
    {
        TPSettingsStore::storeToastPosition(2);
        TPSettingsStore::storeTouchColorRGB(0x007AFF);
        TPSettingsStore::storeTouchSize(57);
        TPSettingsStore::storeTouchOpacity(5);
        TPSettingsStore::postAllSettings();
        QTRY_COMPARE(postedDocuments().size(), 1);
        QJsonObject expected = freshDocument();
        expected.insert(QStringLiteral("tp_toast_pos"), 2);
        expected.insert(QStringLiteral("tp_touch_color"), 0x007AFF);
        expected.insert(QStringLiteral("tp_touch_size"), 57);
        expected.insert(QStringLiteral("tp_touch_opacity"), 5);
        QCOMPARE(postedDocuments().first(), expected);
        QCOMPARE(TPSettingsStore::currentToastPosition(), 2);
    }

    void changingTheLanguageStoresItAndSendsNothing()
    {
        QCOMPARE(TPSettingsStore::storeLanguageSegment(1), QStringLiteral("en"));
        QCOMPARE(QSettings().value(TPLangKey).toString(), QStringLiteral("en"));
        QCOMPARE(TPSettingsStore::storeLanguageSegment(0), QStringLiteral("vi"));
        QCOMPARE(TPSettingsStore::storeLanguageSegment(7), QStringLiteral("vi"));
        QCOMPARE(QSettings().value(TPLangKey).toString(), QStringLiteral("vi"));
        QVERIFY(m_engine->flush());
        QCOMPARE(m_engine->requests().size(), 0);
    }

    void changeWithEngineUnreachableIsStillStored()
    {
        TPPointEngineAPIAtNothing();
        TPSettingsStore::storeTouchOpacity(33);
        TPSettingsStore::postAllSettings();
        QCOMPARE(TPSettingsStore::currentTouchOpacity(), 33);
        TPPointEngineAPIAt(m_engine->port());
        QVERIFY(m_engine->flush());
        QCOMPARE(TPSettingsStore::currentTouchOpacity(), 33);
        QCOMPARE(m_engine->requests().size(), 0);
    }
};

QTEST_GUILESS_MAIN(TestTPSettingsStore)
#include "tst_tpsettingsstore.moc"
