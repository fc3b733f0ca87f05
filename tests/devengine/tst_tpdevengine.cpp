#include "engine/tpengineapi.h"
#include "tpdevengine.h"
#include "tpenginecalls.h"
#include "tptestutil.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

namespace {

using Error = TPEngineAPI::Error;

const TPError kNoCompletion{QStringLiteral("test"), 0, QStringLiteral("no completion")};

// The result once the completion has run, or kNoCompletion's when it never does.
template <typename Result>
Result awaited(const std::shared_ptr<TPOutcome<Result>> &outcome, const Result &timedOut)
{
    return QTest::qWaitFor([&] { return outcome->calls == 1; }, 10000) ? outcome->result : timedOut;
}

template <typename Operation>
Error judged(Operation operation)
{
    return awaited(TPStartJudged(operation), TPJudgedResult{kNoCompletion}).error;
}

TPListingResult listing()
{
    return awaited(TPStartListing(), TPListingResult{{}, kNoCompletion});
}

TPTextResult readScript(const QString &path)
{
    return awaited(TPStartRead(path), TPTextResult{std::nullopt, kNoCompletion});
}

// What the engine answers, for the cases where the status and body themselves matter.
struct RawAnswer
{
    int status = 0;
    QByteArray body;
};

RawAnswer raw(const QString &method, const QString &path, const QString &query)
{
    RawAnswer answer;
    bool done = false;
    TPEngineAPI::requestMethod(
        method, path, query, std::nullopt,
        [&](const std::optional<QByteArray> &body, int status, const Error &) {
            answer = {status, body.value_or(QByteArray())};
            done = true;
        });
    if (!QTest::qWaitFor([&] { return done; }, 10000))
        return {-1, "no completion"};
    return answer;
}

QStringList paths(const QJsonArray &entries)
{
    QStringList result;
    for (const QJsonValue &entry : entries) {
        const QJsonObject object = entry.toObject();
        result.append(
            object.value(QStringLiteral("path")).toString() +
            (object.value(QStringLiteral("dir")).toBool() ? QStringLiteral("/") : QString()));
    }
    return result;
}

} // namespace

class TestTPDevEngine : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<TPDevEngine> m_engine;
    QStringList m_log;

    QString root() const { return m_dir->filePath(QStringLiteral("scripts")); }
    QString inRoot(const QString &relative) const { return root() + u'/' + relative; }
    QString outside(const QString &name) const { return m_dir->filePath(name); }

private slots:
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_dir->isValid());
        QVERIFY(QDir().mkpath(root()));
        m_log.clear();
        m_engine = std::make_unique<TPDevEngine>(root());
        connect(m_engine.get(), &TPDevEngine::logLine, this,
                [this](const QString &line) { m_log.append(line); });
        const quint16 port = m_engine->listen(0);
        QVERIFY(port != 0);
        TPPointEngineAPIAt(port);
    }
    void cleanup()
    {
        m_engine.reset();
        m_dir.reset();
    }

    // ---- one end-to-end test per operation ----

    void listingHoldsEveryFileAndFolderRecursively()
    {
        QVERIFY(TPWriteFileBytes(inRoot(QStringLiteral("main.lua")), "print(1)"));
        QVERIFY(TPWriteFileBytes(inRoot(QStringLiteral("lib/util/x.lua")), ""));
        QVERIFY(QDir().mkpath(inRoot(QStringLiteral("empty"))));
        const TPListingResult result = listing();
        QCOMPARE(result.error, std::nullopt);
        QCOMPARE(paths(result.entries),
                 QStringList({"empty/", "lib/", "lib/util/", "lib/util/x.lua", "main.lua"}));
    }

    void readReturnsTheFileAndMissingFileIs404()
    {
        QVERIFY(TPWriteFileBytes(inRoot(QStringLiteral("lib/a.lua")), "-- Xin chào\n"));
        const TPTextResult text = readScript(QStringLiteral("lib/a.lua"));
        QCOMPARE(orNone(text.text), QString::fromUtf8("-- Xin chào\n"));
        QCOMPARE(
            raw(QStringLiteral("GET"), QStringLiteral("/script"), QStringLiteral("name=none.lua"))
                .status,
            404);
        QCOMPARE(readScript(QStringLiteral("none.lua")).error,
                 std::optional<TPError>(
                     TPEngineAPI::errorMsg(QString::fromUtf8("Không đọc được file"))));
    }

    void saveWritesTheWholeContent()
    {
        QVERIFY(TPWriteFileBytes(inRoot(QStringLiteral("a.lua")), "old content that is longer"));
        QCOMPARE(judged([](auto c) {
                     TPEngineAPI::saveScript(QStringLiteral("a.lua"), QStringLiteral("new"), c);
                 }),
                 std::nullopt);
        QCOMPARE(TPReadFileBytes(inRoot(QStringLiteral("a.lua"))), QByteArray("new"));
        QCOMPARE(judged([](auto c) {
                     TPEngineAPI::saveScript(QStringLiteral("lib/b.lua"), QStringLiteral("b"), c);
                 }),
                 std::nullopt);
        QCOMPARE(TPReadFileBytes(inRoot(QStringLiteral("lib/b.lua"))), QByteArray("b"));
        QCOMPARE(QDir(root()).entryList(QDir::Files | QDir::Hidden), QStringList({"a.lua"}));
    }

    void createMakesAnEmptyFile()
    {
        QCOMPARE(judged([](auto c) { TPEngineAPI::createScript(QStringLiteral("demo.lua"), c); }),
                 std::nullopt);
        QVERIFY(QFileInfo(inRoot(QStringLiteral("demo.lua"))).isFile());
        QCOMPARE(TPReadFileBytes(inRoot(QStringLiteral("demo.lua"))), QByteArray());
    }

    void deleteRemovesFilesAndFoldersWithWhatTheyHold()
    {
        QVERIFY(TPWriteFileBytes(inRoot(QStringLiteral("a.lua")), "x"));
        QVERIFY(TPWriteFileBytes(inRoot(QStringLiteral("full/b.lua")), "x"));
        QVERIFY(TPWriteFileBytes(inRoot(QStringLiteral("full/deeper/c.lua")), "x"));
        QVERIFY(TPWriteFileBytes(outside(QStringLiteral("away/kept.lua")), "outside"));
        QVERIFY(QFile::link(outside(QStringLiteral("away")), inRoot(QStringLiteral("full/link"))));
        QVERIFY(QDir().mkpath(inRoot(QStringLiteral("empty"))));
        QCOMPARE(judged([](auto c) { TPEngineAPI::deleteScript(QStringLiteral("a.lua"), c); }),
                 std::nullopt);
        QVERIFY(!QFileInfo::exists(inRoot(QStringLiteral("a.lua"))));
        QCOMPARE(judged([](auto c) { TPEngineAPI::deleteScript(QStringLiteral("empty"), c); }),
                 std::nullopt);
        QVERIFY(!QFileInfo::exists(inRoot(QStringLiteral("empty"))));
        QCOMPARE(judged([](auto c) { TPEngineAPI::deleteScript(QStringLiteral("full"), c); }),
                 std::nullopt);
        QVERIFY(!QFileInfo::exists(inRoot(QStringLiteral("full"))));
        // A link inside the folder went with it; what it pointed at did not.
        QCOMPARE(TPReadFileBytes(outside(QStringLiteral("away/kept.lua"))), "outside");
        QCOMPARE(raw(QStringLiteral("DELETE"), QStringLiteral("/script"),
                     QStringLiteral("name=gone.lua"))
                     .status,
                 404);
        QCOMPARE(judged([](auto c) { TPEngineAPI::deleteScript(QStringLiteral("gone.lua"), c); }),
                 std::optional<TPError>(TPEngineAPI::errorMsg(QString::fromUtf8("Xoá thất bại"))));
    }

    void makeFolderCreatesParentsAndRefusesExisting()
    {
        QCOMPARE(judged([](auto c) { TPEngineAPI::createFolder(QStringLiteral("a/b/c"), c); }),
                 std::nullopt);
        QVERIFY(QFileInfo(inRoot(QStringLiteral("a/b/c"))).isDir());
        QCOMPARE(raw(QStringLiteral("POST"), QStringLiteral("/mkdir"), QStringLiteral("name=a/b"))
                     .status,
                 409);
    }

    void renameMovesAndRefusesToOverwrite()
    {
        QVERIFY(TPWriteFileBytes(inRoot(QStringLiteral("lib/a.lua")), "a"));
        QVERIFY(TPWriteFileBytes(inRoot(QStringLiteral("lib/taken.lua")), "taken"));
        QCOMPARE(judged([](auto c) {
                     TPEngineAPI::renameScript(QStringLiteral("lib/a.lua"), QStringLiteral("lib/b"),
                                               c);
                 }),
                 std::nullopt);
        QCOMPARE(TPReadFileBytes(inRoot(QStringLiteral("lib/b"))), QByteArray("a"));
        QVERIFY(!QFileInfo::exists(inRoot(QStringLiteral("lib/a.lua"))));
        QCOMPARE(raw(QStringLiteral("POST"), QStringLiteral("/rename"),
                     QStringLiteral("from=lib/b&to=lib/taken.lua"))
                     .status,
                 409);
        QCOMPARE(TPReadFileBytes(inRoot(QStringLiteral("lib/taken.lua"))), QByteArray("taken"));
        QCOMPARE(TPReadFileBytes(inRoot(QStringLiteral("lib/b"))), QByteArray("a"));
        QCOMPARE(judged([](auto c) {
                     TPEngineAPI::renameScript(QStringLiteral("lib"), QStringLiteral("src"), c);
                 }),
                 std::nullopt);
        QCOMPARE(TPReadFileBytes(inRoot(QStringLiteral("src/taken.lua"))), QByteArray("taken"));
    }

    void runStartsTheScriptAndLogsItsOutput()
    {
        QVERIFY(
            TPWriteFileBytes(inRoot(QStringLiteral("hello.lua")), "print('hello', 42) tap(3, 4)"));
        QCOMPARE(judged([](auto c) { TPEngineAPI::runFile(QStringLiteral("hello.lua"), c); }),
                 std::nullopt);
        QTRY_VERIFY(m_log.contains(QStringLiteral("[hello.lua] finished")));
        QVERIFY(m_log.contains(QStringLiteral("[hello.lua] hello\t42")));
        QVERIFY(m_log.contains(QStringLiteral("[hello.lua] tap 3 4")));
    }

    void runOfMissingScriptIs404()
    {
        QCOMPARE(
            raw(QStringLiteral("GET"), QStringLiteral("/runfile"), QStringLiteral("name=none.lua"))
                .status,
            404);
        QCOMPARE(judged([](auto c) { TPEngineAPI::runFile(QStringLiteral("none.lua"), c); }),
                 std::optional<TPError>(TPEngineAPI::errorMsg(QString::fromUtf8("Chạy thất bại"))));
    }

    void scriptWithSyntaxErrorGives500WithTheCompilersMessage()
    {
        QVERIFY(TPWriteFileBytes(inRoot(QStringLiteral("bad.lua")), "x = = 1"));
        const RawAnswer answer =
            raw(QStringLiteral("GET"), QStringLiteral("/runfile"), QStringLiteral("name=bad.lua"));
        QCOMPARE(answer.status, 500);
        QVERIFY2(answer.body.contains("bad.lua:1:"), answer.body.constData());
        QCOMPARE(m_engine->runner()->activeRuns(), 0);
    }

    void scriptThatLoopsForeverBlocksNothingAndEndsWithTheEngine()
    {
        QVERIFY(TPWriteFileBytes(inRoot(QStringLiteral("loop.lua")), "while true do end"));
        QCOMPARE(judged([](auto c) { TPEngineAPI::runFile(QStringLiteral("loop.lua"), c); }),
                 std::nullopt);
        QCOMPARE(m_engine->runner()->activeRuns(), 1);
        QVERIFY(TPWriteFileBytes(inRoot(QStringLiteral("a.lua")), "a"));
        QCOMPARE(orNone(readScript(QStringLiteral("a.lua")).text), QStringLiteral("a"));
        QCOMPARE(m_engine->runner()->activeRuns(), 1);
        m_engine.reset();
        // Reaching this line means the destructor stopped and joined the endless run.
        QVERIFY(!m_engine);
    }

    void runningTheSameScriptAgainStopsTheEarlierRun()
    {
        QVERIFY(
            TPWriteFileBytes(inRoot(QStringLiteral("loop.lua")), "while true do sleep(10) end"));
        QCOMPARE(judged([](auto c) { TPEngineAPI::runFile(QStringLiteral("loop.lua"), c); }),
                 std::nullopt);
        QCOMPARE(judged([](auto c) { TPEngineAPI::runFile(QStringLiteral("loop.lua"), c); }),
                 std::nullopt);
        QTRY_VERIFY(m_log.contains(QStringLiteral("[loop.lua] stopped")));
        QCOMPARE(m_engine->runner()->activeRuns(), 1);
    }

    void settingsAreKeptInMemoryAndBesideTheRoot()
    {
        TPEngineAPI::postSettings(
            {{QStringLiteral("tp_debug_touch"), true}, {QStringLiteral("tp_touch_size"), 44}});
        QTRY_COMPARE(m_engine->lastSettings().value(QStringLiteral("tp_touch_size")),
                     QJsonValue(44));
        QCOMPARE(m_engine->settingsFilePath(), root() + QStringLiteral(".settings.json"));
        const QJsonObject stored =
            QJsonDocument::fromJson(TPReadFileBytes(m_engine->settingsFilePath())).object();
        QCOMPARE(stored.value(QStringLiteral("tp_debug_touch")), QJsonValue(true));
        QCOMPARE(raw(QStringLiteral("POST"), QStringLiteral("/settings"), QString()).status, 400);
    }

    void everyRequestIsLogged()
    {
        raw(QStringLiteral("GET"), QStringLiteral("/script"), QStringLiteral("name=none.lua"));
        raw(QStringLiteral("PUT"), QStringLiteral("/nothing"), QString());
        QVERIFY2(m_log.filter(QRegularExpression(QStringLiteral(
                                  "^GET /script name=none.lua -> 404 \\(\\d+\\.\\d+ ms\\)$")))
                         .size() == 1,
                 qPrintable(m_log.join(u'\n')));
        QCOMPARE(m_log.filter(QStringLiteral("/nothing")).size(), 1);
    }

    // ---- paths that would leave the root ----

    void pathsLeavingTheRootAreRefusedAndTouchNothing_data()
    {
        QTest::addColumn<QString>("method");
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("query");
        QTest::newRow("read parent") << "GET"
                                     << "/script"
                                     << "name=../secret.txt";
        QTest::newRow("write parent") << "POST"
                                      << "/script"
                                      << "name=../secret.txt";
        QTest::newRow("write nested parent") << "POST"
                                             << "/script"
                                             << "name=lib/../../secret.txt";
        QTest::newRow("write absolute") << "POST"
                                        << "/script"
                                        << "name=/tmp/x.lua";
        QTest::newRow("delete parent") << "DELETE"
                                       << "/script"
                                       << "name=../secret.txt";
        QTest::newRow("mkdir parent") << "POST"
                                      << "/mkdir"
                                      << "name=../newdir";
        QTest::newRow("run parent") << "GET"
                                    << "/runfile"
                                    << "name=../secret.txt";
        QTest::newRow("rename from parent") << "POST"
                                            << "/rename"
                                            << "from=../secret.txt&to=x";
        QTest::newRow("rename to parent") << "POST"
                                          << "/rename"
                                          << "from=lib/a.lua&to=../moved.lua";
        QTest::newRow("rename to absolute") << "POST"
                                            << "/rename"
                                            << "from=lib/a.lua&to=/tmp/moved.lua";
        QTest::newRow("write through link") << "POST"
                                            << "/script"
                                            << "name=out/secret.txt";
        QTest::newRow("read through link") << "GET"
                                           << "/script"
                                           << "name=out/secret.txt";
        QTest::newRow("delete through link") << "DELETE"
                                             << "/script"
                                             << "name=out/secret.txt";
        QTest::newRow("rename into link") << "POST"
                                          << "/rename"
                                          << "from=lib/a.lua&to=out/moved.lua";
        QTest::newRow("mkdir through link") << "POST"
                                            << "/mkdir"
                                            << "name=out/newdir";
        QTest::newRow("encoded parent") << "GET"
                                        << "/script"
                                        << "name=%2E%2E/secret.txt";
        QTest::newRow("empty name") << "DELETE"
                                    << "/script"
                                    << "name=";
    }
    void pathsLeavingTheRootAreRefusedAndTouchNothing()
    {
        QFETCH(QString, method);
        QFETCH(QString, path);
        QFETCH(QString, query);
        QVERIFY(TPWriteFileBytes(outside(QStringLiteral("secret.txt")), "secret"));
        QVERIFY(TPWriteFileBytes(outside(QStringLiteral("outdir/secret.txt")), "secret"));
        QVERIFY(TPWriteFileBytes(inRoot(QStringLiteral("lib/a.lua")), "a"));
        QVERIFY(QFile::link(outside(QStringLiteral("outdir")), inRoot(QStringLiteral("out"))));
        const QStringList before =
            QDir(m_dir->path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);

        const RawAnswer answer = raw(method, path, query);
        QCOMPARE(answer.status, 400);
        QCOMPARE(TPReadFileBytes(outside(QStringLiteral("secret.txt"))), QByteArray("secret"));
        QCOMPARE(TPReadFileBytes(outside(QStringLiteral("outdir/secret.txt"))),
                 QByteArray("secret"));
        QCOMPARE(QDir(m_dir->path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), before);
        QCOMPARE(QDir(outside(QStringLiteral("outdir")))
                     .entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                 QStringList({"secret.txt"}));
        QCOMPARE(TPReadFileBytes(inRoot(QStringLiteral("lib/a.lua"))), QByteArray("a"));
    }

    void linkOutOfTheRootIsNotListed()
    {
        QVERIFY(TPWriteFileBytes(outside(QStringLiteral("outdir/secret.txt")), "secret"));
        QVERIFY(QFile::link(outside(QStringLiteral("outdir")), inRoot(QStringLiteral("out"))));
        QVERIFY(TPWriteFileBytes(inRoot(QStringLiteral("a.lua")), "a"));
        QCOMPARE(paths(listing().entries), QStringList({"a.lua"}));
    }

    // A folder of many files is listed whole, in order; how fast is for a benchmark to say.
    void listingOfManyFilesIsComplete()
    {
        constexpr int kFiles = 2000;
        for (int i = 0; i < kFiles; ++i)
            QVERIFY(TPWriteFileBytes(
                inRoot(QStringLiteral("bulk/f%1.lua").arg(i, 5, 10, QLatin1Char('0'))), ""));
        const TPListingResult result = listing();
        QCOMPARE(result.error, std::nullopt);
        QCOMPARE(result.entries.size(), kFiles + 1);
        QCOMPARE(paths(result.entries).first(), QStringLiteral("bulk/"));
        QCOMPARE(paths(result.entries).at(1), QStringLiteral("bulk/f00000.lua"));
        QCOMPARE(paths(result.entries).last(), QStringLiteral("bulk/f01999.lua"));
    }
};

QTEST_GUILESS_MAIN(TestTPDevEngine)
#include "tst_tpdevengine.moc"
