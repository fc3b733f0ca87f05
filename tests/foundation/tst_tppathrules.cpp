#include "foundation/tppathrules.h"
#include "tptestutil.h"

#include <QSet>
#include <QTest>

class TestTPPathRules : public QObject
{
    Q_OBJECT

private slots:
    void sanitizeTurnsSpacesIntoUnderscoresAndDropsTheRest_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("sanitized");
        QTest::newRow("inner space") << "my script.lua"
                                     << "my_script.lua";
        QTest::newRow("outer spaces kept as underscores") << "  a  "
                                                          << "__a__";
        QTest::newRow("slash dropped") << "a/b"
                                       << "ab";
        QTest::newRow("parent reference flattened") << "../x"
                                                    << "..x";
        QTest::newRow("empty") << ""
                               << "";
        QTest::newRow("vietnamese letters dropped") << u8"tệp" << "tp";
        QTest::newRow("allowed set unchanged") << "AZaz09._-"
                                               << "AZaz09._-";
        QTest::newRow("no-break space dropped") << QString::fromUtf8("a\u00a0b") << "ab";
        QTest::newRow("astral character dropped") << QString::fromUtf8("a😀b") << "ab";
    }
    void sanitizeTurnsSpacesIntoUnderscoresAndDropsTheRest()
    {
        QFETCH(QString, typed);
        QFETCH(QString, sanitized);
        QCOMPARE(TPSanitizeSegment(typed), sanitized);
    }

    void textOfOnlyDroppedCharactersSanitizesToNothing_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::newRow("vietnamese letter") << QString::fromUtf8("ồ");
        QTest::newRow("punctuation") << "#?*";
        QTest::newRow("tab") << "\t";
    }
    void textOfOnlyDroppedCharactersSanitizesToNothing()
    {
        QFETCH(QString, typed);
        QCOMPARE(TPSanitizeSegment(typed), QString());
        // The create dialog reports it as a bad name; the rename dialog ignores it.
        QCOMPARE(orNone(TPNewEntryPath(QString(), typed, false)), TPNone);
        QCOMPARE(orNone(TPNewEntryPath(QStringLiteral("lib"), typed, true)), TPNone);
        QCOMPARE(orNone(TPRenameDestination(QStringLiteral("lib/a.lua"), typed)), TPNone);
    }

    void joinPathAddsASeparatorOnlyBelowTheRoot()
    {
        QCOMPARE(TPJoinPath(QString(), QStringLiteral("a.lua")), QStringLiteral("a.lua"));
        QCOMPARE(TPJoinPath(QStringLiteral("lib/util"), QStringLiteral("x.lua")),
                 QStringLiteral("lib/util/x.lua"));
    }

    void newFileGetsLuaSuffixAndNewFolderIsSanitizedOnly()
    {
        QCOMPARE(orNone(TPNewEntryPath(QStringLiteral("lib"), QStringLiteral("test"), false)),
                 QStringLiteral("lib/test.lua"));
        QCOMPARE(orNone(TPNewEntryPath(QString(), QStringLiteral("my tools"), true)),
                 QStringLiteral("my_tools"));
        QCOMPARE(orNone(TPNewEntryPath(QString(), QStringLiteral("tools.lua"), true)),
                 QStringLiteral("tools.lua"));
    }

    void suffixTestIgnoresCase_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("path");
        QTest::newRow("mixed case kept") << "Init.Lua"
                                         << "Init.Lua";
        QTest::newRow("upper case kept") << "Main.LUA"
                                         << "Main.LUA";
        QTest::newRow("partial suffix") << "main.lu"
                                        << "main.lu.lua";
        QTest::newRow("bare lua") << "lua"
                                  << "lua.lua";
    }
    void suffixTestIgnoresCase()
    {
        QFETCH(QString, typed);
        QFETCH(QString, path);
        QCOMPARE(orNone(TPNewEntryPath(QString(), typed, false)), path);
    }

    void renameKeepsTheFolderAndAddsNoSuffix()
    {
        QCOMPARE(orNone(TPRenameDestination(QStringLiteral("lib/a.lua"), QStringLiteral("b"))),
                 QStringLiteral("lib/b"));
        QCOMPARE(orNone(TPRenameDestination(QStringLiteral("a.lua"), QStringLiteral("c d"))),
                 QStringLiteral("c_d"));
        QCOMPARE(orNone(TPRenameDestination(QStringLiteral("tools"), QStringLiteral("tools.lua"))),
                 QStringLiteral("tools.lua"));
    }

    void renameToTheUnchangedNameSendsNothing()
    {
        QCOMPARE(orNone(TPRenameDestination(QStringLiteral("lib/a.lua"), QStringLiteral("a.lua"))),
                 TPNone);
        QCOMPARE(
            orNone(TPRenameDestination(QStringLiteral("lib/my_a.lua"), QStringLiteral("my a.lua"))),
            TPNone);
        QCOMPARE(
            orNone(TPRenameDestination(QStringLiteral("lib/a.lua"), QString::fromUtf8("aồ.lua"))),
            TPNone);
        // The comparison is case-sensitive: a change of case is a rename.
        QCOMPARE(orNone(TPRenameDestination(QStringLiteral("lib/a.lua"), QStringLiteral("A.lua"))),
                 QStringLiteral("lib/A.lua"));
    }

    void dotNamesPassAsTyped()
    {
        QCOMPARE(TPSanitizeSegment(QStringLiteral(".")), QStringLiteral("."));
        QCOMPARE(TPSanitizeSegment(QStringLiteral("..")), QStringLiteral(".."));
        QCOMPARE(orNone(TPNewEntryPath(QStringLiteral("lib"), QStringLiteral(".."), true)),
                 QStringLiteral("lib/.."));
        QCOMPARE(orNone(TPNewEntryPath(QString(), QStringLiteral("."), true)), QStringLiteral("."));
    }

    void lastSegmentAndParentSplitAtTheLastSlash()
    {
        QCOMPARE(TPLastPathSegment(QStringLiteral("a/b/c.lua")), QStringLiteral("c.lua"));
        QCOMPARE(TPLastPathSegment(QStringLiteral("c.lua")), QStringLiteral("c.lua"));
        QCOMPARE(TPParentPath(QStringLiteral("a/b/c.lua")), QStringLiteral("a/b"));
        QCOMPARE(TPParentPath(QStringLiteral("c.lua")), QString());
    }

    // The stem ends at the last dot; a name with no dot after its first character is all
    // stem.
    void aNamesStemEndsBeforeItsExtension_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<qsizetype>("stem");
        QTest::newRow("script") << QStringLiteral("main.lua") << qsizetype(4);
        QTest::newRow("two dots") << QStringLiteral("a.b.lua") << qsizetype(3);
        QTest::newRow("no dot") << QStringLiteral("Makefile") << qsizetype(8);
        QTest::newRow("leading dot") << QStringLiteral(".profile") << qsizetype(8);
        QTest::newRow("empty") << QString() << qsizetype(0);
    }
    void aNamesStemEndsBeforeItsExtension()
    {
        QFETCH(QString, name);
        QFETCH(qsizetype, stem);
        QCOMPARE(TPNameStemLength(name), stem);
    }

    void aCopyTakesTheNextFreeNameInItsFolder()
    {
        QSet<QString> taken;
        const auto isTaken = [&taken](const QString &path) { return taken.contains(path); };
        QCOMPARE(TPCopyPath(QStringLiteral("lib/main.lua"), isTaken),
                 QStringLiteral("lib/main_copy.lua"));
        taken = {QStringLiteral("lib/main_copy.lua")};
        QCOMPARE(TPCopyPath(QStringLiteral("lib/main.lua"), isTaken),
                 QStringLiteral("lib/main_copy_2.lua"));
        taken << QStringLiteral("lib/main_copy_2.lua") << QStringLiteral("lib/main_copy_4.lua");
        QCOMPARE(TPCopyPath(QStringLiteral("lib/main.lua"), isTaken),
                 QStringLiteral("lib/main_copy_3.lua"));
    }

    void aMovedPathIsTheNewPathOrTheSamePlaceUnderIt()
    {
        const QString from = QStringLiteral("lib");
        const QString to = QStringLiteral("tools/lib");
        QCOMPARE(orNone(TPMovedPath(QStringLiteral("lib"), from, to)), QStringLiteral("tools/lib"));
        QCOMPARE(orNone(TPMovedPath(QStringLiteral("lib/a/b.lua"), from, to)),
                 QStringLiteral("tools/lib/a/b.lua"));
        QCOMPARE(orNone(TPMovedPath(QStringLiteral("library.lua"), from, to)), TPNone);
        QCOMPARE(orNone(TPMovedPath(QStringLiteral("li"), from, to)), TPNone);
        QCOMPARE(orNone(TPMovedPath(QStringLiteral("x/lib"), from, to)), TPNone);
        QCOMPARE(orNone(TPMovedPath(QStringLiteral("a.lua"), QString(), to)), TPNone);
    }

    void aCopyKeepsTheExtensionAndANameWithoutOne()
    {
        const auto nothingTaken = [](const QString &) { return false; };
        QCOMPARE(TPCopyPath(QStringLiteral("notes.txt"), nothingTaken),
                 QStringLiteral("notes_copy.txt"));
        QCOMPARE(TPCopyPath(QStringLiteral("Makefile"), nothingTaken),
                 QStringLiteral("Makefile_copy"));
        QCOMPARE(TPCopyPath(QStringLiteral(".hidden"), nothingTaken),
                 QStringLiteral(".hidden_copy"));
        QCOMPARE(TPCopyPath(QStringLiteral("a.b.lua"), nothingTaken),
                 QStringLiteral("a.b_copy.lua"));
    }
};

QTEST_APPLESS_MAIN(TestTPPathRules)
#include "tst_tppathrules.moc"
