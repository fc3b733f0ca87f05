#include "editor/tpopenedfiles.h"

#include <QCoreApplication>
#include <QSettings>
#include <QStandardPaths>
#include <QTest>

// The recent and favourite files, kept in the app's settings.
class TestTPOpenedFiles : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        QCoreApplication::setOrganizationName(QStringLiteral("TPCompanionTests"));
        QCoreApplication::setApplicationName(QStringLiteral("tst_tpopenedfiles"));
    }
    void init() { QSettings().clear(); }

    void recentsAreTheLastOpenedFirstEachOnce()
    {
        TPOpenedFiles::recordOpened(QStringLiteral("a.lua"));
        TPOpenedFiles::recordOpened(QStringLiteral("b.lua"));
        TPOpenedFiles::recordOpened(QStringLiteral("a.lua"));
        QCOMPARE(TPOpenedFiles::recents(),
                 QStringList({QStringLiteral("a.lua"), QStringLiteral("b.lua")}));
    }

    void aMovedFileOrFolderCarriesItsRecentAndFavouritePlaces()
    {
        TPOpenedFiles::recordOpened(QStringLiteral("lib/a.lua"));
        TPOpenedFiles::recordOpened(QStringLiteral("library.lua"));
        TPOpenedFiles::recordOpened(QStringLiteral("lib/deep/b.lua"));
        TPOpenedFiles::setFavourite(QStringLiteral("lib"), true);
        TPOpenedFiles::setFavourite(QStringLiteral("lib/a.lua"), true);
        TPOpenedFiles::moved(QStringLiteral("lib"), QStringLiteral("tools/lib"));
        QCOMPARE(TPOpenedFiles::recents(),
                 QStringList({"tools/lib/deep/b.lua", "library.lua", "tools/lib/a.lua"}));
        QCOMPARE(TPOpenedFiles::favourites(), QStringList({"tools/lib", "tools/lib/a.lua"}));
        // A file moved onto a recent path appears there once.
        TPOpenedFiles::recordOpened(QStringLiteral("x.lua"));
        TPOpenedFiles::moved(QStringLiteral("library.lua"), QStringLiteral("x.lua"));
        QCOMPARE(TPOpenedFiles::recents(),
                 QStringList({"x.lua", "tools/lib/deep/b.lua", "tools/lib/a.lua"}));
    }

    void recentsAreCappedAtTwenty()
    {
        for (int i = 0; i < 25; ++i)
            TPOpenedFiles::recordOpened(QStringLiteral("f%1.lua").arg(i));
        const QStringList recents = TPOpenedFiles::recents();
        QCOMPARE(recents.size(), 20);
        QCOMPARE(recents.first(), QStringLiteral("f24.lua"));
        QCOMPARE(recents.last(), QStringLiteral("f5.lua"));
    }

    // Kept in the settings file: a later launch reads them back.
    void favouritesAreKeptAcrossLaunches()
    {
        TPOpenedFiles::setFavourite(QStringLiteral("lib/util.lua"), true);
        TPOpenedFiles::setFavourite(QStringLiteral("main.lua"), true);
        TPOpenedFiles::setFavourite(QStringLiteral("main.lua"), true);
        QSettings().sync();
        const QSettings stored(QSettings().fileName(), QSettings::NativeFormat);
        QCOMPARE(stored.value(QLatin1String(TPOpenedFiles::FavouritesKey)).toStringList(),
                 QStringList({QStringLiteral("lib/util.lua"), QStringLiteral("main.lua")}));
        TPOpenedFiles::setFavourite(QStringLiteral("lib/util.lua"), false);
        QVERIFY(!TPOpenedFiles::isFavourite(QStringLiteral("lib/util.lua")));
        QVERIFY(TPOpenedFiles::isFavourite(QStringLiteral("main.lua")));
    }

    // The keys are the app's own: none of them is an engine option.
    void theKeysAreTheAppsOwn()
    {
        QVERIFY(!QLatin1String(TPOpenedFiles::RecentsKey).startsWith(QLatin1String("tp_")));
        QVERIFY(!QLatin1String(TPOpenedFiles::FavouritesKey).startsWith(QLatin1String("tp_")));
    }
};

QTEST_MAIN(TestTPOpenedFiles)
#include "tst_tpopenedfiles.moc"
