#include "foundation/tpownerfile.h"
#include "tptestutil.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <dirent.h>

#include <atomic>
#include <thread>

namespace {

// The entry names of a folder in the order the file system lists them.
QStringList fileSystemOrder(const QString &folder)
{
    QStringList names;
    DIR *dir = opendir(QFile::encodeName(folder).constData());
    if (!dir)
        return names;
    while (const dirent *entry = readdir(dir)) {
        const QString name = QFile::decodeName(entry->d_name);
        if (name != QLatin1String(".") && name != QLatin1String(".."))
            names.append(name);
    }
    closedir(dir);
    return names;
}

} // namespace

class TestTPOwnerFile : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_dir;

    QString jailbreakRoot() const { return m_dir->filePath(QStringLiteral("jb")); }
    QString appGroup() const { return m_dir->filePath(QStringLiteral("AppGroup")); }
    QString primary() const
    {
        return jailbreakRoot() + QStringLiteral("/var/tmp/tapper_owner.txt");
    }
    QString fallbackIn(const QString &rootName) const
    {
        return appGroup() + u'/' + rootName + QStringLiteral("/var/tmp/tapper_owner.txt");
    }

    // A jailbreak root under a plain file: its var/tmp folder can never be created.
    void makePrimaryUnwritable()
    {
        const QString blocker = m_dir->filePath(QStringLiteral("blocker"));
        QVERIFY(TPWriteFileBytes(blocker, "not a folder"));
        TPSetOwnerFileLocations({blocker + QStringLiteral("/jb"), appGroup()});
    }

private slots:
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_dir->isValid());
        QVERIFY(QDir().mkpath(appGroup()));
        TPSetOwnerFileLocations({jailbreakRoot(), appGroup()});
    }

    void defaultsAreTheDeviceLocations()
    {
        const TPOwnerFileFolders defaults;
        QCOMPARE(defaults.jailbreakRoot, QStringLiteral("/var/jb"));
        QCOMPARE(defaults.appGroupFolder, QStringLiteral("/var/mobile/Containers/Shared/AppGroup"));
        TPSetOwnerFileLocations(defaults);
        QCOMPARE(TPOwnerFilePrimaryPath(), QStringLiteral("/var/jb/var/tmp/tapper_owner.txt"));
    }

    void writeStoresTrimmedNameAndOneLineFeed()
    {
        QVERIFY(TPWriteOwnerFile(QStringLiteral("  Tavo \n")));
        QCOMPARE(TPReadFileBytes(primary()), QByteArray("Tavo\n"));
        QCOMPARE(TPReadOwnerFile(), QStringLiteral("Tavo"));
    }

    void writeOfBlankNameFailsAndKeepsExistingFile_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("empty") << QString();
        QTest::newRow("spaces and line feeds") << QStringLiteral("  \n\t ");
        QTest::newRow("unicode white space") << QString::fromUtf8("\u00a0\u2028\u3000");
    }
    void writeOfBlankNameFailsAndKeepsExistingFile()
    {
        QFETCH(QString, name);
        QVERIFY(TPWriteFileBytes(primary(), "Old\n"));
        QVERIFY(!TPWriteOwnerFile(name));
        QCOMPARE(TPReadFileBytes(primary()), QByteArray("Old\n"));
    }

    void blankNameCreatesNoFolder()
    {
        QVERIFY(!TPWriteOwnerFile(QStringLiteral("   ")));
        QVERIFY(!QFileInfo::exists(jailbreakRoot()));
    }

    void noFileAnywhereReadsEmptyAndUnwritableRootFailsTheWrite()
    {
        QCOMPARE(TPReadOwnerFile(), QString());
        QCOMPARE(orNone(TPOwnerFileFallbackPath()), TPNone);
        makePrimaryUnwritable();
        QCOMPARE(TPReadOwnerFile(), QString());
        QVERIFY(!TPWriteOwnerFile(QStringLiteral("Tavo")));
    }

    void firstListedJailbreakRootServesReadAndWrite()
    {
        QVERIFY(QDir(appGroup()).mkdir(QStringLiteral(".jbroot-AAAA")));
        QVERIFY(QDir(appGroup()).mkdir(QStringLiteral(".jbroot-BBBB")));
        QVERIFY(QDir(appGroup()).mkdir(QStringLiteral("other")));
        QStringList roots = fileSystemOrder(appGroup()).filter(QStringLiteral(".jbroot-"));
        QCOMPARE(roots.size(), 2);
        const QString first = roots.at(0);
        const QString second = roots.at(1);
        QCOMPARE(orNone(TPOwnerFileFallbackPath()), fallbackIn(first));

        QVERIFY(TPWriteFileBytes(fallbackIn(first), "First\n"));
        QVERIFY(TPWriteFileBytes(fallbackIn(second), "Second\n"));
        QCOMPARE(TPReadOwnerFile(), QStringLiteral("First"));

        makePrimaryUnwritable();
        QVERIFY(TPWriteOwnerFile(QStringLiteral("Tavo")));
        QCOMPARE(TPReadFileBytes(fallbackIn(first)), QByteArray("Tavo\n"));
        QCOMPARE(TPReadFileBytes(fallbackIn(second)), QByteArray("Second\n"));
    }

    void fallbackPrefixIsCaseSensitive()
    {
        QVERIFY(QDir(appGroup()).mkdir(QStringLiteral(".JBROOT-X")));
        QCOMPARE(orNone(TPOwnerFileFallbackPath()), TPNone);
    }

    void emptyPrimaryFallsBackButLoneLineFeedDoesNot()
    {
        QVERIFY(QDir(appGroup()).mkdir(QStringLiteral(".jbroot-1")));
        QVERIFY(TPWriteFileBytes(fallbackIn(QStringLiteral(".jbroot-1")), "Fallback\n"));

        QVERIFY(TPWriteFileBytes(primary(), ""));
        QCOMPARE(TPReadOwnerFile(), QStringLiteral("Fallback"));

        QVERIFY(TPWriteFileBytes(primary(), "\n"));
        QCOMPARE(TPReadOwnerFile(), QString());
    }

    void invalidUtf8PrimaryReadsAsMissingAndFallsBack()
    {
        QVERIFY(QDir(appGroup()).mkdir(QStringLiteral(".jbroot-1")));
        QVERIFY(TPWriteFileBytes(fallbackIn(QStringLiteral(".jbroot-1")), "Fallback\n"));
        QVERIFY(TPWriteFileBytes(primary(), QByteArray("Ta\xff\xfevo\n")));
        QCOMPARE(TPReadOwnerFile(), QStringLiteral("Fallback"));
    }

    void invalidUtf8EverywhereReadsEmpty()
    {
        QVERIFY(TPWriteFileBytes(primary(), QByteArray("\xc3\x28")));
        QCOMPARE(TPReadOwnerFile(), QString());
    }

    void successfulPrimaryWriteLeavesFallbackAlone()
    {
        QVERIFY(QDir(appGroup()).mkdir(QStringLiteral(".jbroot-1")));
        QVERIFY(TPWriteFileBytes(fallbackIn(QStringLiteral(".jbroot-1")), "Fallback\n"));
        QVERIFY(TPWriteOwnerFile(QStringLiteral("Tavo")));
        QCOMPARE(TPReadFileBytes(fallbackIn(QStringLiteral(".jbroot-1"))),
                 QByteArray("Fallback\n"));
    }

    void submittedBlankNameIsRefusedAndTouchesNothing()
    {
        QVERIFY(TPWriteFileBytes(primary(), "Old\n"));
        QVERIFY(!TPSubmitOwnerName(QStringLiteral(" \t\n")));
        QCOMPARE(TPReadFileBytes(primary()), QByteArray("Old\n"));
    }

    void submittedNameIsWrittenTrimmedAndAcceptedEvenWhenTheWriteFails()
    {
        QVERIFY(TPSubmitOwnerName(QStringLiteral("  Tavo ")));
        QCOMPARE(TPReadFileBytes(primary()), QByteArray("Tavo\n"));
        makePrimaryUnwritable();
        QVERIFY(TPSubmitOwnerName(QStringLiteral("Tavo")));
        QCOMPARE(TPReadOwnerFile(), QString());
    }

    void innerSpacesAreKept()
    {
        QVERIFY(TPWriteOwnerFile(QStringLiteral(" Tavo 2\t")));
        QCOMPARE(TPReadFileBytes(primary()), QByteArray("Tavo 2\n"));
        QCOMPARE(TPReadOwnerFile(), QStringLiteral("Tavo 2"));
    }

    void nonAsciiNameIsStoredAsUtf8()
    {
        QVERIFY(TPWriteOwnerFile(QString::fromUtf8("Máy của Tâm")));
        QCOMPARE(TPReadFileBytes(primary()), QByteArray("M\xc3\xa1y c\xe1\xbb\xa7"
                                                        "a T\xc3\xa2m\n"));
        QCOMPARE(TPReadOwnerFile(), QString::fromUtf8("Máy của Tâm"));
    }

    void concurrentReaderNeverSeesAPartlyWrittenFile()
    {
        const QByteArray shortName = "Tavo";
        const QByteArray longName = QByteArray(64 * 1024, 'L');
        QVERIFY(TPWriteOwnerFile(QString::fromLatin1(shortName)));
        std::atomic<bool> stop = false;
        std::atomic<int> reads = 0;
        std::atomic<int> torn = 0;
        std::thread reader([&] {
            while (!stop) {
                const QByteArray seen = TPReadFileBytes(primary());
                if (seen != shortName + '\n' && seen != longName + '\n')
                    ++torn;
                ++reads;
            }
        });
        for (int i = 0; i < 200; ++i)
            TPWriteOwnerFile(QString::fromLatin1(i % 2 ? shortName : longName));
        stop = true;
        reader.join();
        QVERIFY(reads > 0);
        QCOMPARE(torn.load(), 0);
    }
};

QTEST_GUILESS_MAIN(TestTPOwnerFile)
#include "tst_tpownerfile.moc"
