#include "app/tpkhovc.h"
#include "foundation/tplang.h"
#include "foundation/tpnotificationcenter.h"

#include <QSettings>
#include <QStandardPaths>
#include <QTest>

class TestTPKhoVC : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        QCoreApplication::setOrganizationName(QStringLiteral("TPCompanionTests"));
        QCoreApplication::setApplicationName(QStringLiteral("tst_tpkhovc"));
    }
    void init() { QSettings().clear(); }

    void announcesTheStoreInTheCurrentLanguage()
    {
        TPKhoVC store;
        store.loadViewIfNeeded();
        QCOMPARE(store.title(), QStringLiteral("Kho"));
        QCOMPARE(store.label(), QString::fromUtf8("Kho — sắp có"));
    }

    void languageChangeRetitlesTitleAndLabelAtOnce()
    {
        TPKhoVC store;
        store.loadViewIfNeeded();
        QSettings().setValue(TPLangKey, QStringLiteral("en"));
        TPNotificationCenter::defaultCenter()->postLangChanged();
        QCOMPARE(store.title(), QStringLiteral("Store"));
        QCOMPARE(store.label(), QString::fromUtf8("Store — coming soon"));
    }
};

QTEST_MAIN(TestTPKhoVC)
#include "tst_tpkhovc.moc"
