#include "scripts/tpscripttree.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

namespace {

QJsonValue file(const QString &path)
{
    return QJsonObject{{QStringLiteral("path"), path}, {QStringLiteral("dir"), false}};
}

QJsonValue folder(const QString &path)
{
    return QJsonObject{{QStringLiteral("path"), path}, {QStringLiteral("dir"), true}};
}

QStringList names(const QJsonArray &children)
{
    QStringList result;
    for (const QJsonValue &child : children)
        result.append(TPScriptTree::entryName(child));
    return result;
}

QStringList childrenOf(const QString &folderPath, const QJsonArray &listing)
{
    return names(TPScriptTree::filterChildrenOf(folderPath, listing));
}

} // namespace

class TestTPScriptTree : public QObject
{
    Q_OBJECT

private slots:
    void rootListsFoldersFirstThenFilesAndSkipsDeeperEntries()
    {
        const QJsonArray listing = {file("b.lua"), folder("A"), file("a/x.lua"), folder("c")};
        QCOMPARE(childrenOf(QString(), listing), QStringList({"A", "c", "b.lua"}));
    }

    void subFolderListsOnlyItsDirectChildren()
    {
        const QJsonArray listing = {folder("a"), file("a/x.lua"), folder("a/sub"),
                                    file("a/sub/y.lua"), file("ab/z.lua")};
        QCOMPARE(childrenOf(QStringLiteral("a"), listing), QStringList({"sub", "x.lua"}));
    }

    void childrenAreTheListingsOwnEntries()
    {
        QJsonObject entry{{QStringLiteral("path"), QStringLiteral("a/x.lua")},
                          {QStringLiteral("dir"), false},
                          {QStringLiteral("size"), 12}};
        const QJsonArray children = TPScriptTree::filterChildrenOf(QStringLiteral("a"), {entry});
        QCOMPARE(children, QJsonArray({entry}));
    }

    void leadingSlashIsNeverListedAtTheRoot()
    {
        QCOMPARE(childrenOf(QString(), {file("/x.lua")}), QStringList());
    }

    void trailingOrDoubledSeparatorIsLeftOut()
    {
        const QJsonArray listing = {folder("a/"), file("a//x.lua")};
        QCOMPARE(childrenOf(QString(), listing), QStringList());
        QCOMPARE(childrenOf(QStringLiteral("a"), listing), QStringList());
    }

    void entryWithoutUsablePathIsSkippedAndWithoutDirIsAFile()
    {
        const QJsonArray listing = {
            QJsonObject{{QStringLiteral("dir"), true}},
            QJsonObject{{QStringLiteral("path"), QString()}},
            QJsonObject{{QStringLiteral("path"), 12}},
            QJsonObject{{QStringLiteral("path"), QJsonValue::Null}},
            QJsonValue(QStringLiteral("loose.lua")),
            QJsonValue(7),
            QJsonObject{{QStringLiteral("path"), QStringLiteral("plain.lua")}},
        };
        const QJsonArray children = TPScriptTree::filterChildrenOf(QString(), listing);
        QCOMPARE(names(children), QStringList({"plain.lua"}));
        QVERIFY(!TPScriptTree::isFolderEntry(children.first()));
        QCOMPARE(TPScriptTree::rowLabel(children.first()), QString::fromUtf8("📄 plain.lua"));
    }

    void rowLabelShowsFolderOrFileIconAndName()
    {
        QCOMPARE(TPScriptTree::rowLabel(folder("lib/util")), QString::fromUtf8("📁 util"));
        QCOMPARE(TPScriptTree::rowLabel(file("lib/util/x.lua")), QString::fromUtf8("📄 x.lua"));
    }

    void dirIsReadByItsTruthValue()
    {
        const auto withDir = [](const QJsonValue &dir) {
            return QJsonObject{{QStringLiteral("path"), QStringLiteral("x")},
                               {QStringLiteral("dir"), dir}};
        };
        QVERIFY(TPScriptTree::isFolderEntry(withDir(true)));
        QVERIFY(TPScriptTree::isFolderEntry(withDir(1)));
        QVERIFY(TPScriptTree::isFolderEntry(withDir(QStringLiteral("true"))));
        QVERIFY(!TPScriptTree::isFolderEntry(withDir(false)));
        QVERIFY(!TPScriptTree::isFolderEntry(withDir(0)));
        QVERIFY(!TPScriptTree::isFolderEntry(withDir(QStringLiteral("false"))));
        QVERIFY(!TPScriptTree::isFolderEntry(withDir(QJsonValue::Null)));
    }

    void prefixMatchIsCaseSensitive()
    {
        QCOMPARE(childrenOf(QStringLiteral("A"), {file("a/x.lua")}), QStringList());
        QCOMPARE(childrenOf(QStringLiteral("a"), {file("a/x.lua")}), QStringList({"x.lua"}));
    }

    void namesSortIgnoringCaseWithoutNumericOrdering()
    {
        QCOMPARE(childrenOf(QString(), {file("Zeta.lua"), file("alpha.lua")}),
                 QStringList({"alpha.lua", "Zeta.lua"}));
        QCOMPARE(childrenOf(QString(), {file("9.lua"), file("10.lua")}),
                 QStringList({"10.lua", "9.lua"}));
        QCOMPARE(childrenOf(QString(), {file("run2.lua"), file("run10.lua")}),
                 QStringList({"run10.lua", "run2.lua"}));
        const QStringList equal = childrenOf(QString(), {file("Alpha"), file("alpha")});
        QCOMPARE(equal.size(), 2);
        QCOMPARE(equal.first().toLower(), QStringLiteral("alpha"));
    }

    // Full case folding: a character may fold to several ("ß" to "ss"), which orders it
    // among the names it folds to, not by its own code.
    void namesSortByFullCaseFolding_data()
    {
        QTest::addColumn<QString>("before");
        QTest::addColumn<QString>("after");
        QTest::newRow("sharp s before st") << QString::fromUtf8("ß.lua") << "st.lua";
        QTest::newRow("sr before sharp s") << "sr.lua" << QString::fromUtf8("ß.lua");
        QTest::newRow("capital sharp s") << QString::fromUtf8("ẞ.lua") << "st.lua";
        QTest::newRow("ff ligature") << QString::fromUtf8("ﬀ.lua") << "fg.lua";
        QTest::newRow("dotted capital I after i") << "i.lua" << QString::fromUtf8("İ.lua");
        QTest::newRow("dotted capital I before j") << QString::fromUtf8("İ.lua") << "j.lua";
        QTest::newRow("iota with dialytika and tonos")
            << QString::fromUtf8("ιz.lua") << QString::fromUtf8("ΐ.lua");
        QTest::newRow("ascii stays") << "A_b.lua"
                                     << "a~.lua";
        QTest::newRow("ascii digits") << "0.lua"
                                      << "a.lua";
        // The platform's compare orders UTF-16 units after folding: a character beyond the
        // basic plane starts with a surrogate (0xD800 to 0xDFFF), which comes before the
        // basic plane's characters from 0xE000 on, whatever its code point.
        QTest::newRow("surrogate before fullwidth a")
            << QString::fromUtf8("📁x.lua") << QString::fromUtf8("ａ.lua");
        QTest::newRow("surrogate before private use")
            << QString::fromUtf8("𝐀.lua") << QString::fromUtf8("\uE000.lua");
        QTest::newRow("hangul before surrogate")
            << QString::fromUtf8("한.lua") << QString::fromUtf8("😀.lua");
        QTest::newRow("fullwidth capital folds before surrogate")
            << QString::fromUtf8("Ａ.lua") << QString::fromUtf8("ｂ.lua");
    }
    void namesSortByFullCaseFolding()
    {
        QFETCH(QString, before);
        QFETCH(QString, after);
        QCOMPARE(childrenOf(QString(), {file(after), file(before)}), QStringList({before, after}));
        QCOMPARE(childrenOf(QString(), {file(before), file(after)}), QStringList({before, after}));
    }

    void namesThatFoldAlikeCompareEqual()
    {
        // Equal names keep no defined order; both are listed.
        for (const char *other : {"ss.lua", "SS.lua", "\u1E9E.lua"}) {
            const QStringList both = childrenOf(
                QString(), {file(QString::fromUtf8("ß.lua")), file(QString::fromUtf8(other))});
            QCOMPARE(both.size(), 2);
            QVERIFY(both.contains(QString::fromUtf8("ß.lua")));
        }
    }

    void folderAndFileOfTheSameNameListFolderFirstWithoutDeduplication()
    {
        const QJsonArray listing = {file("x"), folder("x"), file("x")};
        const QJsonArray children = TPScriptTree::filterChildrenOf(QString(), listing);
        QCOMPARE(children.size(), 3);
        QVERIFY(TPScriptTree::isFolderEntry(children.at(0)));
    }

    void emptyOrUnmatchedListingYieldsNoChildren()
    {
        QCOMPARE(TPScriptTree::filterChildrenOf(QString(), {}), QJsonArray());
        QCOMPARE(TPScriptTree::filterChildrenOf(QStringLiteral("lib"), {file("a.lua")}),
                 QJsonArray());
    }

    void foldersAreNeverImplied()
    {
        const QJsonArray listing = {file("a/b.lua")};
        QCOMPARE(childrenOf(QString(), listing), QStringList());
        QCOMPARE(childrenOf(QStringLiteral("a"), listing), QStringList({"b.lua"}));
    }

    void moveTargetsAreTheRootThenEveryFolderInTreeOrder()
    {
        const QJsonArray listing =
            QJsonDocument::fromJson("[{\"path\":\"b\",\"dir\":true},"
                                    "{\"path\":\"a/z\",\"dir\":true},"
                                    "{\"path\":\"A2\",\"dir\":true},"
                                    "{\"path\":\"a\",\"dir\":true},"
                                    "{\"path\":\"a/y\",\"dir\":true},"
                                    "{\"path\":\"a/y/deep\",\"dir\":true},"
                                    "{\"path\":\"a/file.lua\",\"dir\":false},"
                                    "{\"path\":\"b/t.lua\"}]")
                .array();
        QCOMPARE(TPScriptTree::moveTargets(listing, QStringLiteral("b/t.lua")),
                 QStringList({QString(), QStringLiteral("a"), QStringLiteral("a/y"),
                              QStringLiteral("a/y/deep"), QStringLiteral("a/z"),
                              QStringLiteral("A2"), QStringLiteral("b")}));
    }

    void aFoldersContentsAreEveryFolderAfterItsParentAndEveryFileUnderIt()
    {
        const QJsonArray listing = {
            file("lib/z/deep/c.lua"), folder("lib/z/deep"), file("lib/a.lua"), folder("lib/z"),
            file("library.lua"),      folder("lib"),        folder("lib/b")};
        const TPScriptTree::Contents contents =
            TPScriptTree::contentsOf(QStringLiteral("lib"), listing);
        QCOMPARE(contents.folders, QStringList({"lib", "lib/z", "lib/b", "lib/z/deep"}));
        QCOMPARE(contents.files, QStringList({"lib/z/deep/c.lua", "lib/a.lua"}));
        QCOMPARE(TPScriptTree::contentsOf(QStringLiteral("gone"), listing).folders,
                 QStringList({"gone"}));
    }

    void aFolderCannotMoveIntoItselfOrItsSubfolders()
    {
        const QJsonArray listing = QJsonDocument::fromJson("[{\"path\":\"a\",\"dir\":true},"
                                                           "{\"path\":\"a/y\",\"dir\":true},"
                                                           "{\"path\":\"a/y/deep\",\"dir\":true},"
                                                           "{\"path\":\"ab\",\"dir\":true}]")
                                       .array();
        QCOMPARE(TPScriptTree::moveTargets(listing, QStringLiteral("a/y")),
                 QStringList({QString(), QStringLiteral("a"), QStringLiteral("ab")}));
        QCOMPARE(TPScriptTree::moveTargets(listing, QStringLiteral("a")),
                 QStringList({QString(), QStringLiteral("ab")}));
    }
};

QTEST_APPLESS_MAIN(TestTPScriptTree)
#include "tst_tpscripttree.moc"
