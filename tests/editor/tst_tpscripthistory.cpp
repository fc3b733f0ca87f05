#include "editor/tpscripthistory.h"

#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

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

    void lineChangesCountAddedAndRemovedLines()
    {
        QCOMPARE(TPScriptHistory::lineChanges("a\nb\nc\n", "a\nB\nc\nd\n"), std::make_pair(2, 1));
        QCOMPARE(TPScriptHistory::lineChanges("same\n", "same\n"), std::make_pair(0, 0));
    }

    void compareShowsEveryLineWithTheChangedOnesMarked()
    {
        const QList<TPDiffLine> lines =
            TPScriptHistory::compare("a\r\nold\r\nc\r\n", "a\r\nnew\r\nc");
        QStringList shown;
        for (const TPDiffLine &line : lines)
            shown.append(QLatin1Char(line.origin) + line.text);
        QCOMPARE(shown, QStringList({" a", "-old", "-c", "+new", "+c"}));
        QCOMPARE(TPScriptHistory::compare("x\ny\n", "x\ny\n").size(), 2);
    }
};

QTEST_GUILESS_MAIN(TestTPScriptHistory)
#include "tst_tpscripthistory.moc"
