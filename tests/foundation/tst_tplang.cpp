#include "foundation/tplang.h"
#include "foundation/tpnotificationcenter.h"

#include <QSettings>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTest>

#include <thread>

class TestTPLang : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        QCoreApplication::setOrganizationName(QStringLiteral("TPCompanionTests"));
        QCoreApplication::setApplicationName(QStringLiteral("tst_tplang"));
    }
    void init() { QSettings().clear(); }

    void concurrentFirstCallsShareOneTable()
    {
        // Runs first, so the two threads race to build the table.
        const TPLangTableMap *seen[2] = {nullptr, nullptr};
        std::thread first([&] { seen[0] = &TPLangTable(); });
        std::thread second([&] { seen[1] = &TPLangTable(); });
        first.join();
        second.join();
        QVERIFY(seen[0] != nullptr);
        QCOMPARE(seen[0], seen[1]);
        QCOMPARE(seen[0], &TPLangTable());
    }

    void tableHoldsAll49KeysWithBothLanguages()
    {
        const TPLangTableMap &table = TPLangTable();
        QCOMPARE(table.size(), 49);
        for (auto it = table.constBegin(); it != table.constEnd(); ++it) {
            QCOMPARE(it->size(), 2);
            QVERIFY2(!it->value(QStringLiteral("vi")).isEmpty(), qPrintable(it.key()));
            QVERIFY2(!it->value(QStringLiteral("en")).isEmpty(), qPrintable(it.key()));
        }
    }

    void exactlySixKeysShareOneTextInBothLanguages()
    {
        QStringList same;
        const TPLangTableMap &table = TPLangTable();
        for (auto it = table.constBegin(); it != table.constEnd(); ++it) {
            if (it->value(QStringLiteral("vi")) == it->value(QStringLiteral("en")))
                same.append(it.key());
        }
        same.sort();
        QCOMPARE(same, QStringList({"alert_ok", "err_offline", "lang_en", "na", "row_device_ip",
                                    "tab_scripts"}));
    }

    void textsAreExact_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("vi");
        QTest::addColumn<QString>("en");
        QTest::newRow("store_coming")
            << "store_coming" << u8"Kho — sắp có" << u8"Store — coming soon";
        QTest::newRow("cancel") << "cancel" << u8"Huỷ" << "Cancel";
        QTest::newRow("err_run_fail") << "err_run_fail" << u8"Không chạy được (engine offline?)"
                                      << "Failed to run (engine offline?)";
        QTest::newRow("owner_prompt_msg")
            << "owner_prompt_msg" << u8"Nhập tên để nhận diện máy này (vd: Tavo)"
            << "Enter a name to identify this device (e.g. Tavo)";
        QTest::newRow("section_options") << "section_options" << u8"Tuỳ chọn" << "Options";
        QTest::newRow("err_offline") << "err_offline"
                                     << "Engine offline (:8090)"
                                     << "Engine offline (:8090)";
    }
    void textsAreExact()
    {
        QFETCH(QString, key);
        QFETCH(QString, vi);
        QFETCH(QString, en);
        QCOMPARE(TPLangTable().value(key).value(QStringLiteral("vi")), vi);
        QCOMPARE(TPLangTable().value(key).value(QStringLiteral("en")), en);
    }

    void noStoredLanguageLooksUpVietnamese()
    {
        QCOMPARE(TPCurrentLang(), QStringLiteral("vi"));
        QCOMPARE(TPL(QStringLiteral("btn_save")), QString::fromUtf8("Lưu"));
    }

    void emptyStoredLanguageLooksUpVietnamese()
    {
        QSettings().setValue(TPLangKey, QString());
        QCOMPARE(TPCurrentLang(), QStringLiteral("vi"));
        QCOMPARE(TPL(QStringLiteral("btn_save")), QString::fromUtf8("Lưu"));
    }

    void englishLooksUpEnglishAndOkIsOkInBoth()
    {
        QCOMPARE(TPL(QStringLiteral("alert_ok")), QStringLiteral("OK"));
        QSettings().setValue(TPLangKey, QStringLiteral("en"));
        QCOMPARE(TPL(QStringLiteral("btn_save")), QStringLiteral("Save"));
        QCOMPARE(TPL(QStringLiteral("alert_ok")), QStringLiteral("OK"));
    }

    void unknownLanguageCodeShowsKeysAndIsReturnedUnchanged()
    {
        QSettings().setValue(TPLangKey, QStringLiteral("fr"));
        QCOMPARE(TPCurrentLang(), QStringLiteral("fr"));
        QCOMPARE(TPL(QStringLiteral("btn_save")), QStringLiteral("btn_save"));
        QCOMPARE(TPL(QStringLiteral("alert_ok")), QStringLiteral("alert_ok"));
    }

    void unknownKeyYieldsItselfInEitherLanguage()
    {
        QCOMPARE(TPL(QStringLiteral("no_such_key")), QStringLiteral("no_such_key"));
        QSettings().setValue(TPLangKey, QStringLiteral("en"));
        QCOMPARE(TPL(QStringLiteral("no_such_key")), QStringLiteral("no_such_key"));
    }

    void newLanguageTakesEffectAtTheNextLookup()
    {
        QCOMPARE(TPL(QStringLiteral("tab_store")), QStringLiteral("Kho"));
        QSettings().setValue(TPLangKey, QStringLiteral("en"));
        QCOMPARE(TPL(QStringLiteral("tab_store")), QStringLiteral("Store"));
    }

    void langChangedIsBroadcastToObservers()
    {
        QSignalSpy spy(TPNotificationCenter::defaultCenter(), &TPNotificationCenter::TPLangChanged);
        TPNotificationCenter::defaultCenter()->postLangChanged();
        QCOMPARE(spy.count(), 1);
    }

    // A version's date shows its whole year in both languages, with the time on a 24-hour
    // clock.
    void datesShowAFourDigitYear_data()
    {
        QTest::addColumn<QString>("lang");
        QTest::addColumn<QString>("expected");
        QTest::newRow("en") << QStringLiteral("en") << QStringLiteral("11/24/2026 17:05");
        QTest::newRow("vi") << QStringLiteral("vi") << QStringLiteral("24/11/2026 17:05");
    }
    void datesShowAFourDigitYear()
    {
        QFETCH(QString, lang);
        QFETCH(QString, expected);
        QSettings().setValue(TPLangKey, lang);
        const QDateTime time(QDate(2026, 11, 24), QTime(17, 5));
        QCOMPARE(TPLDateTime(time), expected);
    }
};

QTEST_GUILESS_MAIN(TestTPLang)
#include "tst_tplang.moc"
