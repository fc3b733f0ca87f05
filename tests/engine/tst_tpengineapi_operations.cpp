#include "engine/tpengineapi.h"
#include "tpenginecalls.h"
#include "tprecordingengine.h"
#include "tptestutil.h"

#include <QDateTime>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>
#include <QTcpServer>
#include <QTest>
#include <QThread>
#include <QUrlQuery>

#include <cmath>
#include <curl/curl.h>
#include <limits>

namespace {

using Error = TPEngineAPI::Error;
using Completion = TPEngineAPI::Completion;
using JudgedOperation = std::function<void(const QString &path, Completion)>;

TPError engineError(const char *message)
{
    return TPEngineAPI::errorMsg(QString::fromUtf8(message));
}

// One row of the protocol table for the operations judged by status alone.
struct JudgedRow
{
    const char *name;
    JudgedOperation operation;
    QByteArray method;
    QString path;
    QString query;
    std::optional<QByteArray> body;
    const char *failure;
};

QList<JudgedRow> judgedRows()
{
    return {
        {"save",
         [](const QString &p, Completion c) {
             TPEngineAPI::saveScript(p, QString::fromUtf8("print('xin chào')\n"), std::move(c));
         },
         "POST", "/script", "name=lib/a.lua", QByteArray("print('xin ch\xc3\xa0o')\n"),
         "Lưu thất bại"},
        {"delete",
         [](const QString &p, Completion c) { TPEngineAPI::deleteScript(p, std::move(c)); },
         "DELETE", "/script", "name=lib/a.lua", QByteArray(), "Xoá thất bại"},
        {"create file",
         [](const QString &p, Completion c) { TPEngineAPI::createScript(p, std::move(c)); }, "POST",
         "/script", "name=lib/a.lua", QByteArray(), "Tạo file thất bại"},
        {"make folder",
         [](const QString &p, Completion c) { TPEngineAPI::createFolder(p, std::move(c)); }, "POST",
         "/mkdir", "name=lib/a.lua", QByteArray(), "Tạo folder thất bại"},
        {"run", [](const QString &p, Completion c) { TPEngineAPI::runFile(p, std::move(c)); },
         "GET", "/runfile", "name=lib/a.lua", QByteArray(), "Chạy thất bại"},
        {"rename",
         [](const QString &p, Completion c) {
             TPEngineAPI::renameScript(p, QStringLiteral("lib/b.lua"), std::move(c));
         },
         "POST", "/rename", "from=lib/a.lua&to=lib/b.lua", QByteArray(), "Đổi tên thất bại"},
    };
}

std::shared_ptr<TPOutcome<TPJudgedResult>> runJudged(const JudgedOperation &operation,
                                                     const QString &path)
{
    return TPStartJudged([&](Completion completion) { operation(path, std::move(completion)); });
}

} // namespace

Q_DECLARE_METATYPE(JudgedRow)

class TestTPEngineAPIOperations : public QObject
{
    Q_OBJECT

    std::unique_ptr<TPRecordingEngine> m_engine;

    void addJudgedRows()
    {
        QTest::addColumn<JudgedRow>("row");
        for (const JudgedRow &row : judgedRows())
            QTest::newRow(row.name) << row;
    }

private slots:
    void init()
    {
        m_engine = std::make_unique<TPRecordingEngine>();
        QVERIFY(m_engine->startAsTheEngine());
    }
    void cleanup() { m_engine.reset(); }

    // ---- the protocol table, request by request ----

    void listingSendsGetScriptsWithoutQueryOrBody()
    {
        m_engine->setDefaultAnswer(TPScriptedAnswer::ok("{\"entries\":[]}"));
        const auto outcome = TPStartListing();
        QTRY_COMPARE(outcome->calls, 1);
        const TPRecordedRequest &request = m_engine->requests().first();
        QCOMPARE(request.method, QByteArray("GET"));
        QCOMPARE(request.path, QStringLiteral("/scripts"));
        QVERIFY(!request.hasQuery);
        QCOMPARE(request.body, QByteArray());
    }

    void readSendsGetScriptWithRawName()
    {
        m_engine->setDefaultAnswer(TPScriptedAnswer::ok("x = 1"));
        const auto outcome = TPStartRead(QStringLiteral("lib/util/a.lua"));
        QTRY_COMPARE(outcome->calls, 1);
        const TPRecordedRequest &request = m_engine->requests().first();
        QCOMPARE(request.method, QByteArray("GET"));
        QCOMPARE(request.path, QStringLiteral("/script"));
        QCOMPARE(request.rawQuery, QStringLiteral("name=lib/util/a.lua"));
        QCOMPARE(request.body, QByteArray());
        QCOMPARE(orNone(outcome->result.text), QStringLiteral("x = 1"));
        QCOMPARE(outcome->result.error, std::nullopt);
    }

    void judgedOperationSendsItsRequest_data() { addJudgedRows(); }
    void judgedOperationSendsItsRequest()
    {
        QFETCH(JudgedRow, row);
        const auto outcome = runJudged(row.operation, QStringLiteral("lib/a.lua"));
        QTRY_COMPARE(outcome->calls, 1);
        QCOMPARE(m_engine->requests().size(), 1);
        const TPRecordedRequest &request = m_engine->requests().first();
        QCOMPARE(request.method, row.method);
        QCOMPARE(request.path, row.path);
        QCOMPARE(request.rawQuery, row.query);
        QCOMPARE(request.body, row.body.value_or(QByteArray()));
        QVERIFY(request.header("content-type").isEmpty());
    }

    void judgedOperationSucceedsOnStatus200WhateverTheBody_data() { addJudgedRows(); }
    void judgedOperationSucceedsOnStatus200WhateverTheBody()
    {
        QFETCH(JudgedRow, row);
        m_engine->setDefaultAnswer(TPScriptedAnswer::ok("{\"ok\":false,\"error\":\"nope\"}"));
        const auto outcome = runJudged(row.operation, QStringLiteral("lib/a.lua"));
        QTRY_COMPARE(outcome->calls, 1);
        QCOMPARE(outcome->result.error, std::nullopt);
        QVERIFY(outcome->ranOnMainThread);
        QVERIFY(outcome->ranAfterReturn);
    }

    void judgedOperationFailsWithItsMessageOnOtherStatus_data() { addJudgedRows(); }
    void judgedOperationFailsWithItsMessageOnOtherStatus()
    {
        QFETCH(JudgedRow, row);
        for (int status : {201, 401, 404, 407, 409, 500}) {
            m_engine->setDefaultAnswer(TPScriptedAnswer::withStatus(status, "engine says no"));
            const auto outcome = runJudged(row.operation, QStringLiteral("lib/a.lua"));
            QTRY_COMPARE(outcome->calls, 1);
            QCOMPARE(outcome->result.error, std::optional<TPError>(engineError(row.failure)));
        }
    }

    void judgedOperationPassesTransportErrorUnchanged_data() { addJudgedRows(); }
    void judgedOperationPassesTransportErrorUnchanged()
    {
        QFETCH(JudgedRow, row);
        TPPointEngineAPIAtNothing();
        const auto outcome = runJudged(row.operation, QStringLiteral("lib/a.lua"));
        QTRY_COMPARE(outcome->calls, 1);
        QVERIFY(outcome->result.error.has_value());
        QCOMPARE(outcome->result.error->domain, QStringLiteral("libcurl"));
        QCOMPARE(outcome->result.error->code, int(CURLE_COULDNT_CONNECT));
    }

    void postSettingsSendsCompactJsonAndIgnoresTheAnswer()
    {
        m_engine->setDefaultAnswer(TPScriptedAnswer::withStatus(500, "broken"));
        TPEngineAPI::postSettings({{QStringLiteral("tp_debug_touch"), true},
                                   {QStringLiteral("tp_touch_size"), qint64(44)}});
        QTRY_COMPARE(m_engine->requests().size(), 1);
        const TPRecordedRequest &request = m_engine->requests().first();
        QCOMPARE(request.method, QByteArray("POST"));
        QCOMPARE(request.path, QStringLiteral("/settings"));
        QVERIFY(!request.hasQuery);
        QVERIFY(request.header("content-type").isEmpty());
        QVERIFY(!request.body.contains(' '));
        QVERIFY(!request.body.contains('\n'));
        const QJsonObject sent = QJsonDocument::fromJson(request.body).object();
        QCOMPARE(sent.value(QStringLiteral("tp_debug_touch")), QJsonValue(true));
        QCOMPARE(sent.value(QStringLiteral("tp_touch_size")), QJsonValue(44));
    }

    // ---- listing ----

    void listingWithEntriesArrayIsAcceptedWhateverTheStatus()
    {
        m_engine->setDefaultAnswer(TPScriptedAnswer::withStatus(
            500,
            "{\"entries\":[{\"path\":\"a.lua\",\"dir\":false},{\"path\":\"lib\",\"dir\":true}]}"));
        const auto outcome = TPStartListing();
        QTRY_COMPARE(outcome->calls, 1);
        QCOMPARE(outcome->result.error, std::nullopt);
        QCOMPARE(outcome->result.entries.size(), 2);
        QCOMPARE(outcome->result.entries.at(1).toObject().value(QStringLiteral("path")),
                 QJsonValue(QStringLiteral("lib")));
    }

    void listingEntriesAreDeliveredUntouched()
    {
        const QByteArray body = "{\"entries\":[{\"path\":\"a.lua\",\"dir\":false,\"size\":12},"
                                "\"odd\",{\"nopath\":1}],\"x\":1}";
        m_engine->setDefaultAnswer(TPScriptedAnswer::ok(body));
        const auto outcome = TPStartListing();
        QTRY_COMPARE(outcome->calls, 1);
        QCOMPARE(outcome->result.entries,
                 QJsonDocument::fromJson(body).object().value(QStringLiteral("entries")).toArray());
    }

    // A listing's body is read as it arrives on the client's own thread, so that a large one
    // never holds up the screens; its completion comes on the main thread.
    void aListingBodyIsReadOffTheMainThreadAndCompletedOnIt()
    {
        QByteArray body = "{\"entries\":[";
        for (int i = 0; i < 20000; ++i)
            body += (i ? "," : "") + QByteArray("{\"path\":\"dir/file") + QByteArray::number(i) +
                    ".lua\",\"dir\":false}";
        body += "]}";
        m_engine->setDefaultAnswer(TPScriptedAnswer::ok(body));
        QThread *const mainThread = QCoreApplication::instance()->thread();
        struct Seen
        {
            QSet<QThread *> readers;
            qsizetype readBytes = 0;
            bool completed = false;
            bool completedOnMain = false;
        };
        const auto seen = std::make_shared<Seen>();
        TPEngineAPI::scriptsBodyWithCompletion(
            [seen](const QByteArray &received, bool) {
                seen->readers.insert(QThread::currentThread());
                seen->readBytes = std::max(seen->readBytes, received.size());
            },
            [seen, mainThread](const QByteArray &, const TPEngineAPI::Error &error) {
                seen->completed = !error;
                seen->completedOnMain = QThread::currentThread() == mainThread;
            });
        QTRY_VERIFY(seen->completed);
        QVERIFY(seen->completedOnMain);
        QVERIFY(!seen->readers.isEmpty());
        QVERIFY(!seen->readers.contains(mainThread));
        QCOMPARE(seen->readBytes, body.size());
    }

    void listingThatIsNotAnObjectWithEntriesArrayIsInvalid_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::newRow("top-level array") << QByteArray("[]");
        QTest::newRow("empty body") << QByteArray("");
        QTest::newRow("not json") << QByteArray("<html>oops</html>");
        QTest::newRow("no entries") << QByteArray("{\"files\":[]}");
        QTest::newRow("entries not array") << QByteArray("{\"entries\":{\"a\":1}}");
        QTest::newRow("entries null") << QByteArray("{\"entries\":null}");
        QTest::newRow("truncated") << QByteArray("{\"entries\":[{\"path\":\"a");
    }
    void listingThatIsNotAnObjectWithEntriesArrayIsInvalid()
    {
        QFETCH(QByteArray, body);
        m_engine->setDefaultAnswer(TPScriptedAnswer::ok(body));
        const auto outcome = TPStartListing();
        QTRY_COMPARE(outcome->calls, 1);
        QCOMPARE(outcome->result.entries, QJsonArray());
        QCOMPARE(outcome->result.error,
                 std::optional<TPError>(engineError("Dữ liệu /scripts không hợp lệ")));
    }

    void emptyEntriesArrayIsAnEmptyListing()
    {
        m_engine->setDefaultAnswer(TPScriptedAnswer::ok("{\"entries\":[]}"));
        const auto outcome = TPStartListing();
        QTRY_COMPARE(outcome->calls, 1);
        QCOMPARE(outcome->result.entries, QJsonArray());
        QCOMPARE(outcome->result.error, std::nullopt);
    }

    void listingTransportErrorDeliversEmptyListAndTheError()
    {
        TPPointEngineAPIAtNothing();
        const auto outcome = TPStartListing();
        QTRY_COMPARE(outcome->calls, 1);
        QCOMPARE(outcome->result.entries, QJsonArray());
        QVERIFY(outcome->result.error.has_value());
        QCOMPARE(outcome->result.error->code, int(CURLE_COULDNT_CONNECT));
    }

    // ---- read ----

    void readOfInvalidUtf8OrEmptyFileYieldsEmptyText_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::newRow("invalid utf-8") << QByteArray("abc\xff\xfe");
        QTest::newRow("empty file") << QByteArray();
    }
    void readOfInvalidUtf8OrEmptyFileYieldsEmptyText()
    {
        QFETCH(QByteArray, body);
        m_engine->setDefaultAnswer(TPScriptedAnswer::ok(body));
        const auto outcome = TPStartRead(QStringLiteral("a.lua"));
        QTRY_COMPARE(outcome->calls, 1);
        QCOMPARE(orNone(outcome->result.text), QString());
        QCOMPARE(outcome->result.error, std::nullopt);
    }

    void readWithStatus404YieldsNoTextAndItsMessage()
    {
        m_engine->setDefaultAnswer(TPScriptedAnswer::withStatus(404, "not found"));
        const auto outcome = TPStartRead(QStringLiteral("missing.lua"));
        QTRY_COMPARE(outcome->calls, 1);
        QCOMPARE(orNone(outcome->result.text), TPNone);
        QCOMPARE(outcome->result.error, std::optional<TPError>(engineError("Không đọc được file")));
    }

    void readTransportErrorYieldsNoTextAndTheError()
    {
        TPPointEngineAPIAtNothing();
        const auto outcome = TPStartRead(QStringLiteral("a.lua"));
        QTRY_COMPARE(outcome->calls, 1);
        QCOMPARE(orNone(outcome->result.text), TPNone);
        QCOMPARE(outcome->result.error->domain, QStringLiteral("libcurl"));
    }

    void readDecodesUtf8Text()
    {
        m_engine->setDefaultAnswer(TPScriptedAnswer::ok("-- Xin chào\ntap(1, 2)\n"));
        const auto outcome = TPStartRead(QStringLiteral("a.lua"));
        QTRY_COMPARE(outcome->calls, 1);
        QCOMPARE(orNone(outcome->result.text), QString::fromUtf8("-- Xin chào\ntap(1, 2)\n"));
    }

    void readKeepsALeadingByteOrderMarkAndSaveSendsItBack()
    {
        const QByteArray withMark = "\xEF\xBB\xBFprint(1)\r\n";
        m_engine->setDefaultAnswer(TPScriptedAnswer::ok(withMark));
        const auto outcome = TPStartRead(QStringLiteral("a.lua"));
        QTRY_COMPARE(outcome->calls, 1);
        const QString text = orNone(outcome->result.text);
        QCOMPARE(text.at(0), QChar(0xFEFF));
        bool saved = false;
        TPEngineAPI::saveScript(QStringLiteral("a.lua"), text,
                                [&saved](const TPEngineAPI::Error &) { saved = true; });
        QTRY_VERIFY(saved);
        QCOMPARE(m_engine->requests().last().body, withMark);
    }

    // ---- paths the URL check rejects, and reserved characters ----

    void pathOutsideUrlCharactersFailsEveryOperationWithoutTraffic_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("space") << QStringLiteral("my script.lua");
        QTest::newRow("vietnamese") << QString::fromUtf8("tệp.lua");
    }
    void pathOutsideUrlCharactersFailsEveryOperationWithoutTraffic()
    {
        QFETCH(QString, path);
        const TPError invalid = engineError("URL không hợp lệ");
        for (const JudgedRow &row : judgedRows()) {
            const auto outcome = runJudged(row.operation, path);
            QTRY_COMPARE(outcome->calls, 1);
            QCOMPARE(outcome->result.error, std::optional<TPError>(invalid));
        }
        const auto text = TPStartRead(path);
        QTRY_COMPARE(text->calls, 1);
        QCOMPARE(orNone(text->result.text), TPNone);
        QCOMPARE(text->result.error, std::optional<TPError>(invalid));
        // The rename destination is checked as well.
        const auto renamed = runJudged(
            [](const QString &p, Completion c) {
                TPEngineAPI::renameScript(QStringLiteral("a.lua"), p, std::move(c));
            },
            path);
        QTRY_COMPARE(renamed->calls, 1);
        QCOMPARE(renamed->result.error, std::optional<TPError>(invalid));
        QVERIFY(m_engine->flush());
        QCOMPARE(m_engine->requests().size(), 0);
    }

    void ampersandInPathReachesTheEngineAsTwoParameters()
    {
        const auto outcome = runJudged(judgedRows().at(1).operation, QStringLiteral("a&b.lua"));
        QTRY_COMPARE(outcome->calls, 1);
        const TPRecordedRequest &request = m_engine->requests().first();
        QCOMPARE(request.rawQuery, QStringLiteral("name=a&b.lua"));
        const QUrlQuery parsed(request.rawQuery);
        QCOMPARE(parsed.queryItemValue(QStringLiteral("name")), QStringLiteral("a"));
        QVERIFY(parsed.hasQueryItem(QStringLiteral("b.lua")));
    }

    void hashInPathReachesTheEngineCutShort()
    {
        const auto outcome = TPStartRead(QStringLiteral("a#b.lua"));
        QTRY_COMPARE(outcome->calls, 1);
        QCOMPARE(m_engine->requests().first().rawQuery, QStringLiteral("name=a"));
    }

    // ---- settings ----

    void settingsJsonCannotRepresentSendsNoRequest_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::newRow("nan") << QVariant(std::nan(""));
        QTest::newRow("infinity") << QVariant(std::numeric_limits<double>::infinity());
        QTest::newRow("date") << QVariant(QDateTime::currentDateTimeUtc());
        QTest::newRow("bytes") << QVariant(QByteArray("\x01"));
        QTest::newRow("nested nan")
            << QVariant(QVariantList{1, QVariant(std::numeric_limits<double>::quiet_NaN())});
    }
    void settingsJsonCannotRepresentSendsNoRequest()
    {
        QFETCH(QVariant, value);
        TPEngineAPI::postSettings(
            {{QStringLiteral("tp_debug_touch"), true}, {QStringLiteral("bad"), value}});
        QVERIFY(m_engine->flush());
        QCOMPARE(m_engine->requests().size(), 0);
    }

    void settingsWithEngineDownReportNothing()
    {
        TPPointEngineAPIAtNothing();
        TPEngineAPI::postSettings({{QStringLiteral("tp_debug_touch"), true}});
        const auto outcome = TPStartListing();
        QTRY_COMPARE(outcome->calls, 1);
        QVERIFY(outcome->result.error.has_value());
    }
};

QTEST_GUILESS_MAIN(TestTPEngineAPIOperations)
#include "tst_tpengineapi_operations.moc"
