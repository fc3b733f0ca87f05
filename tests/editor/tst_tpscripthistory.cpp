#include "editor/tpscripthistory.h"

#include <QRandomGenerator>
#include <QSet>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <climits>
#include <memory>
#include <optional>

namespace {

// Incompressible bytes, so that each version takes its own room in the repository.
QByteArray noise(int size, quint32 seed)
{
    QRandomGenerator random(seed);
    QByteArray bytes(size, Qt::Uninitialized);
    for (char &byte : bytes)
        byte = char(random.bounded(256));
    return bytes;
}

} // namespace

class TestTPScriptHistory : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<TPScriptHistory> m_history;

    QList<TPScriptVersion> versionsOf(const QString &path)
    {
        std::optional<QList<TPScriptVersion>> found;
        m_history->versions(path, this,
                            [&found](const QList<TPScriptVersion> &versions) { found = versions; });
        [[maybe_unused]] const bool answered = QTest::qWaitFor([&] { return found.has_value(); });
        // No answer at all shows as one version with no path.
        return found.value_or(QList<TPScriptVersion>(1));
    }

    // The files the history lists, each with the contents of its newest version.
    QStringList filesWithNewest()
    {
        std::optional<QList<TPScriptVersion>> found;
        m_history->files(this, [&found](const QList<TPScriptVersion> &files) { found = files; });
        [[maybe_unused]] const bool answered = QTest::qWaitFor([&] { return found.has_value(); });
        QStringList shown;
        for (const TPScriptVersion &file : found.value_or(QList<TPScriptVersion>()))
            shown.append(file.path + u'=' + QString::fromUtf8(contentsOf(file.blob)));
        return shown;
    }

    QStringList contentsOfVersions(const QString &path)
    {
        QStringList shown;
        for (const TPScriptVersion &version : versionsOf(path))
            shown.append(QString::fromUtf8(contentsOf(version.blob)));
        return shown;
    }

    QByteArray contentsOf(const QByteArray &blob)
    {
        std::optional<std::optional<QByteArray>> found;
        m_history->contents(blob, this,
                            [&found](const std::optional<QByteArray> &bytes) { found = bytes; });
        [[maybe_unused]] const bool answered = QTest::qWaitFor([&] { return found.has_value(); });
        return found && *found ? **found : QByteArray("<missing>");
    }

private slots:
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_dir->isValid());
        m_history = std::make_unique<TPScriptHistory>(m_dir->filePath(QStringLiteral("history")));
    }
    void cleanup()
    {
        m_history.reset();
        m_dir.reset();
    }

    void eachNewContentIsOneVersionAndTheSameBytesAreNotRecordedTwice()
    {
        m_history->record(QStringLiteral("lib/a.lua"), "one");
        m_history->record(QStringLiteral("lib/a.lua"), "one");
        m_history->record(QStringLiteral("lib/a.lua"), "two\n");
        m_history->record(QStringLiteral("b.lua"), "bee");
        const QList<TPScriptVersion> versions = versionsOf(QStringLiteral("lib/a.lua"));
        QCOMPARE(versions.size(), 2);
        QCOMPARE(versions.at(0).path, QStringLiteral("lib/a.lua"));
        QCOMPARE(versions.at(0).size, 4);
        QCOMPARE(contentsOf(versions.at(0).blob), QByteArray("two\n"));
        QCOMPARE(contentsOf(versions.at(1).blob), QByteArray("one"));
        QVERIFY(versions.at(0).time >= versions.at(1).time);
        QVERIFY(qAbs(versions.at(0).time.secsTo(QDateTime::currentDateTime())) < 60);
    }

    void aVersionKeepsItsExactBytes_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("crlf and cr") << QByteArray("a\r\nb\rc");
        QTest::newRow("byte-order mark") << QByteArray("\xEF\xBB\xBFprint(1)");
        QTest::newRow("latin-1 in a string") << QByteArray("print('caf\xe9')\n");
        QTest::newRow("nul bytes") << QByteArray("a\0b", 3);
        QTest::newRow("empty") << QByteArray("");
    }
    void aVersionKeepsItsExactBytes()
    {
        QFETCH(QByteArray, bytes);
        m_history->record(QStringLiteral("x.lua"), "before");
        m_history->record(QStringLiteral("x.lua"), bytes);
        const QList<TPScriptVersion> versions = versionsOf(QStringLiteral("x.lua"));
        QCOMPARE(versions.size(), 2);
        QCOMPARE(contentsOf(versions.first().blob), bytes);
        QCOMPARE(versions.first().size, bytes.size());
    }

    void filesAreListedByTheirNewestChangeFirst()
    {
        m_history->record(QStringLiteral("a.lua"), "1");
        m_history->record(QStringLiteral("b.lua"), "1");
        m_history->record(QStringLiteral("a.lua"), "2");
        std::optional<QList<TPScriptVersion>> files;
        m_history->files(this, [&files](const QList<TPScriptVersion> &newest) { files = newest; });
        QTRY_VERIFY(files.has_value());
        QCOMPARE(files->size(), 2);
        QCOMPARE(files->at(0).path, QStringLiteral("a.lua"));
        QCOMPARE(files->at(1).path, QStringLiteral("b.lua"));
        QCOMPARE(contentsOf(files->at(0).blob), QByteArray("2"));
    }

    void pathsGitCannotHoldAreNotRecorded()
    {
        for (const char *path : {"../x.lua", ".git/config", "a//b.lua", "/abs.lua", "a\nb.lua"})
            m_history->record(QString::fromLatin1(path), "x");
        m_history->record(QStringLiteral("ok.lua"), "x");
        std::optional<QList<TPScriptVersion>> files;
        m_history->files(this, [&files](const QList<TPScriptVersion> &newest) { files = newest; });
        QTRY_VERIFY(files.has_value());
        QCOMPARE(files->size(), 1);
        QCOMPARE(files->first().path, QStringLiteral("ok.lua"));
    }

    void anAnswerForAContextThatIsGoneIsDropped()
    {
        m_history->record(QStringLiteral("a.lua"), "1");
        auto context = std::make_unique<QObject>();
        bool called = false;
        m_history->versions(QStringLiteral("a.lua"), context.get(),
                            [&called](const QList<TPScriptVersion> &) { called = true; });
        context.reset();
        m_history->waitForIdle();
        QCoreApplication::processEvents();
        QVERIFY(!called);
        QCOMPARE(versionsOf(QStringLiteral("a.lua")).size(), 1);
    }

    // Past its limit the repository is rewritten with the newest versions of each file; the
    // oldest go first, and the kept ones keep their bytes and their order.
    void theBoundRemovesTheOldestVersionsFirst()
    {
        m_history = std::make_unique<TPScriptHistory>(m_dir->filePath(QStringLiteral("bounded")),
                                                      200 * 1024);
        QList<QByteArray> recorded;
        for (int i = 0; i < 64; ++i) {
            recorded.append(noise(8 * 1024, quint32(i)));
            m_history->record(QStringLiteral("big.lua"), recorded.last());
        }
        m_history->record(QStringLiteral("small.lua"), "kept");
        m_history->waitForIdle();
        const QList<TPScriptVersion> versions = versionsOf(QStringLiteral("big.lua"));
        QVERIFY2(versions.size() < recorded.size(), QByteArray::number(versions.size()));
        QVERIFY(versions.size() <= TPScriptHistory::KeptVersions);
        QVERIFY(!versions.isEmpty());
        for (int i = 0; i < versions.size(); ++i)
            QCOMPARE(contentsOf(versions.at(i).blob), recorded.at(recorded.size() - 1 - i));
        QCOMPARE(versionsOf(QStringLiteral("small.lua")).size(), 1);
        QVERIFY(m_history->sizeOnDisk() < 2 * 200 * 1024);
    }

    void aMovedFilesVersionsAreListedUnderItsNewPath()
    {
        m_history->record(QStringLiteral("collect_coins.lua"), "one\n");
        m_history->record(QStringLiteral("collect_coins.lua"), "two\n");
        m_history->record(QStringLiteral("other.lua"), "x");
        m_history->move(QStringLiteral("collect_coins.lua"), QStringLiteral("coins.lua"));
        m_history->move(QStringLiteral("coins.lua"), QStringLiteral("farm/coins.lua"));
        m_history->record(QStringLiteral("farm/coins.lua"), "three\n");
        QCOMPARE(contentsOfVersions(QStringLiteral("farm/coins.lua")),
                 QStringList({"three\n", "two\n", "one\n"}));
        QCOMPARE(versionsOf(QStringLiteral("collect_coins.lua")).size(), 0);
        QCOMPARE(versionsOf(QStringLiteral("coins.lua")).size(), 0);
        QCOMPARE(filesWithNewest(), QStringList({"farm/coins.lua=three\n", "other.lua=x"}));
    }

    void aMovedFoldersFilesFollowItAndNothingElseDoes()
    {
        m_history->record(QStringLiteral("lib/a.lua"), "a");
        m_history->record(QStringLiteral("lib/deep/b.lua"), "b");
        m_history->record(QStringLiteral("library.lua"), "not inside");
        std::optional<QStringList> moved;
        m_history->move(QStringLiteral("lib"), QStringLiteral("tools/lib"), this,
                        [&moved](const QStringList &paths) { moved = paths; });
        QTRY_VERIFY(moved.has_value());
        QCOMPARE(QSet<QString>(moved->begin(), moved->end()),
                 QSet<QString>({"lib/a.lua", "lib/deep/b.lua"}));
        QCOMPARE(contentsOfVersions(QStringLiteral("tools/lib/a.lua")), QStringList({"a"}));
        QCOMPARE(contentsOfVersions(QStringLiteral("tools/lib/deep/b.lua")), QStringList({"b"}));
        QCOMPARE(contentsOfVersions(QStringLiteral("library.lua")), QStringList({"not inside"}));
        QCOMPARE(versionsOf(QStringLiteral("lib/a.lua")).size(), 0);
    }

    // A new file at a moved file's old path has a history of its own; the same bytes
    // recorded again at the new path are no new version.
    void aFileMadeAtAMovedFilesOldPathStartsItsOwnHistory()
    {
        m_history->record(QStringLiteral("a.lua"), "old");
        m_history->move(QStringLiteral("a.lua"), QStringLiteral("b.lua"));
        m_history->record(QStringLiteral("a.lua"), "new");
        m_history->record(QStringLiteral("b.lua"), "old");
        QCOMPARE(contentsOfVersions(QStringLiteral("a.lua")), QStringList({"new"}));
        QCOMPARE(contentsOfVersions(QStringLiteral("b.lua")), QStringList({"old"}));
    }

    void aMoveOfSomethingNeverRecordedOrIntoItselfRecordsNothing()
    {
        m_history->record(QStringLiteral("lib/a.lua"), "a");
        m_history->move(QStringLiteral("gone.lua"), QStringLiteral("here.lua"));
        m_history->move(QStringLiteral("lib"), QStringLiteral("lib/inner"));
        QCOMPARE(filesWithNewest(), QStringList({"lib/a.lua=a"}));
    }

    void movedVersionsKeepTheirNewPathWhenTheHistoryIsRewrittenWithinItsLimit()
    {
        m_history =
            std::make_unique<TPScriptHistory>(m_dir->filePath(QStringLiteral("small")), 200 * 1024);
        for (quint32 i = 0; i < 4; ++i)
            m_history->record(QStringLiteral("old.lua"), noise(60 * 1024, i));
        m_history->move(QStringLiteral("old.lua"), QStringLiteral("new.lua"));
        // Enough records after the move for the history to be rewritten.
        for (quint32 i = 0; i < 40; ++i)
            m_history->record(QStringLiteral("other.lua"), noise(60 * 1024, 100 + i));
        m_history->waitForIdle();
        // The history was rewritten after the move: some of the later versions are gone.
        QVERIFY(versionsOf(QStringLiteral("other.lua")).size() < 40);
        const QList<TPScriptVersion> versions = versionsOf(QStringLiteral("new.lua"));
        QVERIFY(!versions.isEmpty());
        QCOMPARE(contentsOf(versions.first().blob), noise(60 * 1024, 3));
        QCOMPARE(versionsOf(QStringLiteral("old.lua")).size(), 0);
    }

    void whenIdleAnswersOnceEverythingAskedBeforeIsRecorded()
    {
        m_history->record(QStringLiteral("a.lua"), "kept");
        bool idle = false;
        m_history->whenIdle(this, [this, &idle] {
            idle = true;
            // A second history on the same folder sees the version: it is on disk.
            TPScriptHistory reader(m_history->folder());
            std::optional<QList<TPScriptVersion>> found;
            reader.versions(QStringLiteral("a.lua"), this,
                            [&found](const QList<TPScriptVersion> &versions) { found = versions; });
            QVERIFY(QTest::qWaitFor([&] { return found.has_value(); }));
            QCOMPARE(found->size(), 1);
        });
        QTRY_VERIFY(idle);
    }

    void diffFoldsUnchangedRunsAroundTheChanges()
    {
        QByteArray older;
        QByteArray newer;
        for (int line = 1; line <= 20; ++line) {
            older += "line " + QByteArray::number(line) + "\r\n";
            if (line == 10)
                newer += "changed 10\r\n";
            else if (line != 15)
                newer += "line " + QByteArray::number(line) + "\r\n";
        }
        newer += "added\r\n";
        QStringList shown;
        for (const TPDiffLine &line : TPScriptHistory::diff(older, newer, 2))
            shown.append(line.origin == '~' ? QStringLiteral("~%1").arg(line.folded)
                                            : QLatin1Char(line.origin) + line.text);
        // Changes closer than twice the context share their run of unchanged lines.
        QCOMPARE(shown,
                 QStringList({"~7", " line 8", " line 9", "-line 10", "+changed 10", " line 11",
                              " line 12", " line 13", " line 14", "-line 15", " line 16",
                              " line 17", "~1", " line 19", " line 20", "+added"}));
    }

    void diffOfTheSameTextIsOneFoldAndOfAnEmptyTextOnlyAdditions()
    {
        const QList<TPDiffLine> same = TPScriptHistory::diff("a\nb\nc\n", "a\nb\nc\n");
        QCOMPARE(same.size(), 1);
        QCOMPARE(same.first().origin, '~');
        QCOMPARE(same.first().folded, 3);
        QStringList shown;
        for (const TPDiffLine &line : TPScriptHistory::diff("", "x\ny"))
            shown.append(QLatin1Char(line.origin) + line.text);
        QCOMPARE(shown, QStringList({"+x", "+y"}));
    }

    void lineChangesCountAddedAndRemovedLines()
    {
        QCOMPARE(TPScriptHistory::lineChanges("a\nb\nc\n", "a\nB\nc\nd\n"), std::make_pair(2, 1));
        QCOMPARE(TPScriptHistory::lineChanges("same\n", "same\n"), std::make_pair(0, 0));
    }

    void aDiffWithTheWholeTextAsContextShowsEveryLineWithTheChangedOnesMarked()
    {
        const QList<TPDiffLine> lines =
            TPScriptHistory::diff("a\r\nold\r\nc\r\n", "a\r\nnew\r\nc", INT_MAX);
        QStringList shown;
        for (const TPDiffLine &line : lines)
            shown.append(QLatin1Char(line.origin) + line.text);
        QCOMPARE(shown, QStringList({" a", "-old", "-c", "+new", "+c"}));
        QCOMPARE(TPScriptHistory::diff("x\ny\n", "x\ny\n", INT_MAX).first().folded, 2);
    }
};

QTEST_GUILESS_MAIN(TestTPScriptHistory)
#include "tst_tpscripthistory.moc"
