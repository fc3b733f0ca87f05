#include "engine/tpengineapi.h"
#include "tpenginecalls.h"
#include "tpoutcome.h"
#include "tprawserver.h"
#include "tprecordingengine.h"

#include "tptestutil.h"

#include <QElapsedTimer>
#include <QLoggingCategory>
#include <QRegularExpression>
#include <QSet>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTest>

#include <curl/curl.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cstring>
#include <mutex>
#include <thread>

namespace {

struct Response
{
    std::optional<QByteArray> body;
    int status = -1;
    TPEngineAPI::Error error;
};
using Outcome = TPOutcome<Response>;

const TPError kInvalidUrl = TPEngineAPI::errorMsg(QString::fromUtf8("URL không hợp lệ"));

// The stack's own headers; the client adds none of its own.
const QList<QByteArray> kStackHeaders = {"host", "connection", "content-length"};

std::shared_ptr<Outcome> send(const QString &method, const QString &path,
                              const std::optional<QString> &query,
                              const std::optional<QByteArray> &body = std::nullopt)
{
    auto outcome = std::make_shared<Outcome>();
    TPEngineAPI::requestMethod(
        method, path, query, body,
        Outcome::recorder<std::optional<QByteArray>, int, TPEngineAPI::Error>(outcome));
    outcome->markReturned();
    return outcome;
}

// A raw server script that reads the request and never answers, holding the connection
// until the server stops.
void holdUntilStopped(TPRawConnection &connection)
{
    if (connection.readRequest().isEmpty())
        return;
    while (!connection.stopping())
        connection.pause(100);
}

// A raw server that reads one request per connection and writes the answer in `pieces`,
// each in a segment of its own after `pauseMs`; it closes the connection after the answer
// when `close` is set, and otherwise waits for the client to close it.
TPRawServer::Script answering(const QList<QByteArray> &pieces, int pauseMs, bool close)
{
    return [pieces, pauseMs, close](TPRawConnection &connection) {
        if (connection.readRequest().isEmpty() || !connection.writeInPieces(pieces, pauseMs))
            return;
        if (!close)
            connection.drainUntilClosed();
    };
}

TPRawServer::Script answering(const QByteArray &answer, bool close = false)
{
    return answering(QList<QByteArray>{answer}, 0, close);
}

// Sends GET /scripts to a raw server that runs `script` and waits for the completion; its
// count stays 0 when none came.
std::shared_ptr<Outcome> listFrom(TPRawServer::Script script)
{
    TPRawServer server(std::move(script));
    if (!server.startAsTheEngine())
        return std::make_shared<Outcome>();
    const auto outcome = send(QStringLiteral("GET"), QStringLiteral("/scripts"), std::nullopt);
    [[maybe_unused]] const bool completed =
        QTest::qWaitFor([&outcome] { return outcome->calls > 0; }, 10000);
    return outcome;
}

// An exchange that ended in an answer with `status` and `body` and no error.
void verifyAnswered(const Response &response, int status, const QByteArray &body)
{
    QVERIFY2(!response.error, qPrintable(response.error->localizedDescription));
    QCOMPARE(response.status, status);
    QCOMPARE(response.body, std::optional<QByteArray>(body));
}

// An exchange that ended in a transport error from libcurl, with no body.
void verifyTransportError(const Response &response, CURLcode code)
{
    QVERIFY(response.error.has_value());
    QCOMPARE(response.error->domain, QStringLiteral("libcurl"));
    QCOMPARE(response.error->code, int(code));
    QVERIFY(response.error->localizedDescription.startsWith(
        QString::fromUtf8(curl_easy_strerror(code))));
    QCOMPARE(response.body, std::nullopt);
}

} // namespace

class TestTPEngineAPIRequest : public QObject
{
    Q_OBJECT

    std::unique_ptr<TPRecordingEngine> m_engine;

private slots:
    void init()
    {
        m_engine = std::make_unique<TPRecordingEngine>();
        QVERIFY(m_engine->startAsTheEngine());
    }
    void cleanup() { m_engine.reset(); }

    void baseAddressIsTheLoopbackEngine()
    {
        QCOMPARE(QString::fromLatin1(TPEngineAPI::BaseAddress),
                 QStringLiteral("http://127.0.0.1:8090"));
    }

    void sessionIsShared()
    {
        TPEngineSession *session = TPEngineAPI::session();
        QVERIFY(session);
        QCOMPARE(TPEngineAPI::session(), session);
    }

    // The engine is on loopback: a proxy named by the environment is never used.
    void proxyFromTheEnvironmentIsNeverUsed()
    {
        QTcpServer proxy;
        QVERIFY(proxy.listen(QHostAddress::LocalHost, 0));
        const QByteArray address = "http://127.0.0.1:" + QByteArray::number(proxy.serverPort());
        qputenv("http_proxy", address);
        qputenv("HTTP_PROXY", address);
        qputenv("all_proxy", address);
        const auto outcome = send(QStringLiteral("GET"), QStringLiteral("/scripts"), std::nullopt);
        QTRY_COMPARE(outcome->calls, 1);
        qunsetenv("http_proxy");
        qunsetenv("HTTP_PROXY");
        qunsetenv("all_proxy");
        QCOMPARE(outcome->result.status, 200);
        QCOMPARE(m_engine->requests().size(), 1);
        QVERIFY(!proxy.hasPendingConnections());
    }

    // The listing's body is read while it arrives, on the session's worker thread, always
    // as a prefix of the body, and whole once before the completion runs on the main thread.
    void listingBodyIsReadOffTheMainThreadBeforeTheCompletion()
    {
        QByteArray listing = "{\"entries\":[" + QByteArray(6000000, ' ') + "]}";
        for (qsizetype i = 0; i < listing.size(); i += 1000)
            listing[i] = i % 2000 ? ' ' : '\n';
        m_engine->setDefaultAnswer(TPScriptedAnswer::ok(listing));
        struct Reads
        {
            std::mutex mutex;
            QSet<std::thread::id> threads;
            int partial = 0;
            bool allPrefixes = true;
            QList<QByteArray> wholeBodies;
        };
        auto reads = std::make_shared<Reads>();
        int calls = 0;
        bool completedAfterTheWholeRead = false;
        TPEngineAPI::scriptsBodyWithCompletion(
            [reads, listing](const QByteArray &received, bool complete) {
                const std::lock_guard lock(reads->mutex);
                reads->threads.insert(std::this_thread::get_id());
                if (complete) {
                    reads->wholeBodies.append(received);
                    return;
                }
                ++reads->partial;
                reads->allPrefixes = reads->allPrefixes && received.size() <= listing.size() &&
                                     std::memcmp(received.constData(), listing.constData(),
                                                 size_t(received.size())) == 0;
            },
            [&, reads](const QByteArray &body, const TPEngineAPI::Error &error) {
                ++calls;
                const std::lock_guard lock(reads->mutex);
                completedAfterTheWholeRead =
                    !error && body == listing && reads->wholeBodies == QList<QByteArray>{listing};
            });
        QTRY_COMPARE(calls, 1);
        QVERIFY(completedAfterTheWholeRead);
        const std::lock_guard lock(reads->mutex);
        QVERIFY(reads->partial > 1);
        QVERIFY(reads->allPrefixes);
        QCOMPARE(reads->threads.size(), 1);
        QVERIFY(!reads->threads.contains(std::this_thread::get_id()));
    }

    void engineErrorCarriesDomainCodeAndMessage()
    {
        const TPError error = TPEngineAPI::errorMsg(QStringLiteral("Lưu thất bại"));
        QCOMPARE(error.domain, QStringLiteral("TPEngineAPI"));
        QCOMPARE(error.code, -1);
        QCOMPARE(error.localizedDescription, QStringLiteral("Lưu thất bại"));
    }

    void absentOrEmptyQueryRequestsThePathWithoutQuestionMark_data()
    {
        QTest::addColumn<std::optional<QString>>("query");
        QTest::newRow("absent") << std::optional<QString>();
        QTest::newRow("empty") << std::optional<QString>(QString());
    }
    void absentOrEmptyQueryRequestsThePathWithoutQuestionMark()
    {
        QFETCH(std::optional<QString>, query);
        const auto outcome = send(QStringLiteral("GET"), QStringLiteral("/scripts"), query);
        QTRY_COMPARE(outcome->calls, 1);
        QCOMPARE(m_engine->requests().size(), 1);
        const TPRecordedRequest &request = m_engine->requests().first();
        QCOMPARE(request.method, QByteArray("GET"));
        QCOMPARE(request.path, QStringLiteral("/scripts"));
        QVERIFY(!request.hasQuery);
        QCOMPARE(outcome->result.status, 200);
    }

    void methodPathQueryAndBodyTravelAsGiven()
    {
        const QByteArray body("line 1\nline 2\0binary", 20);
        const auto outcome = send(QStringLiteral("POST"), QStringLiteral("/script"),
                                  QStringLiteral("name=lib/a.lua"), body);
        QTRY_COMPARE(outcome->calls, 1);
        const TPRecordedRequest &request = m_engine->requests().first();
        QCOMPARE(request.method, QByteArray("POST"));
        QCOMPARE(request.path, QStringLiteral("/script"));
        QCOMPARE(request.rawQuery, QStringLiteral("name=lib/a.lua"));
        QCOMPARE(request.body, body);
    }

    void presentEmptyBodyIsSentAsZeroBytes()
    {
        const auto outcome = send(QStringLiteral("POST"), QStringLiteral("/script"),
                                  QStringLiteral("name=new.lua"), QByteArray());
        QTRY_COMPARE(outcome->calls, 1);
        const TPRecordedRequest &request = m_engine->requests().first();
        QCOMPARE(request.method, QByteArray("POST"));
        QCOMPARE(request.body, QByteArray());
    }

    void clientAddsNoHeaderOfItsOwn_data()
    {
        QTest::addColumn<QString>("method");
        QTest::addColumn<std::optional<QByteArray>>("body");
        QTest::newRow("GET") << "GET" << std::optional<QByteArray>();
        QTest::newRow("POST text") << "POST" << std::optional<QByteArray>("print('hi')");
        QTest::newRow("POST json") << "POST" << std::optional<QByteArray>("{\"a\":1}");
        QTest::newRow("DELETE") << "DELETE" << std::optional<QByteArray>();
    }
    void clientAddsNoHeaderOfItsOwn()
    {
        QFETCH(QString, method);
        QFETCH(std::optional<QByteArray>, body);
        const auto outcome = send(method, QStringLiteral("/x"), QStringLiteral("name=a"), body);
        QTRY_COMPARE(outcome->calls, 1);
        const TPRecordedRequest &request = m_engine->requests().first();
        QCOMPARE(request.method, method.toLatin1());
        for (const QByteArray &name : request.headerNames())
            QVERIFY2(kStackHeaders.contains(name), name.constData());
        QVERIFY(request.header("content-type").isEmpty());
        QVERIFY(request.header("accept").isEmpty());
        QVERIFY(request.header("authorization").isEmpty());
        QVERIFY(request.header("cookie").isEmpty());
    }

    void queryWithCharacterOutsideUrlSetFailsWithoutTraffic_data()
    {
        QTest::addColumn<QString>("query");
        QTest::newRow("space") << QStringLiteral("name=my script.lua");
        QTest::newRow("vietnamese letter") << QString::fromUtf8("name=tệp.lua");
        QTest::newRow("control character") << QStringLiteral("name=a\u0001.lua");
        QTest::newRow("pipe") << QStringLiteral("name=a|b.lua");
        QTest::newRow("double quote") << QStringLiteral("name=a\"b");
        QTest::newRow("angle bracket") << QStringLiteral("name=a<b");
        QTest::newRow("backslash") << QStringLiteral("name=a\\b");
        QTest::newRow("caret") << QStringLiteral("name=a^b");
        QTest::newRow("brace") << QStringLiteral("name={a}");
        QTest::newRow("stray percent") << QStringLiteral("name=100%");
        QTest::newRow("bad escape") << QStringLiteral("name=%zz");
        QTest::newRow("tab") << QStringLiteral("name=a\tb");
    }
    void queryWithCharacterOutsideUrlSetFailsWithoutTraffic()
    {
        QFETCH(QString, query);
        const auto outcome = send(QStringLiteral("GET"), QStringLiteral("/script"), query);
        QCOMPARE(outcome->calls, 0);
        QTRY_COMPARE(outcome->calls, 1);
        QCOMPARE(outcome->result.status, 0);
        QCOMPARE(outcome->result.body, std::nullopt);
        QCOMPARE(outcome->result.error, kInvalidUrl);
        QVERIFY(outcome->ranOnMainThread);
        QVERIFY(outcome->ranAfterReturn);
        QVERIFY(m_engine->flush());
        QCOMPARE(m_engine->requests().size(), 0);
    }

    void reservedCharactersPassUnescaped_data()
    {
        QTest::addColumn<QString>("query");
        QTest::addColumn<QString>("seen");
        QTest::newRow("ampersand splits") << "name=a&b.lua"
                                          << "name=a&b.lua";
        QTest::newRow("equals kept") << "name=a=b.lua"
                                     << "name=a=b.lua";
        QTest::newRow("hash cuts") << "name=a#b.lua"
                                   << "name=a";
        QTest::newRow("escape kept") << "name=a%20b.lua"
                                     << "name=a%20b.lua";
        QTest::newRow("sub-delims") << "name=(a)!$',;*+.lua"
                                    << "name=(a)!$',;*+.lua";
    }
    void reservedCharactersPassUnescaped()
    {
        QFETCH(QString, query);
        QFETCH(QString, seen);
        const auto outcome = send(QStringLiteral("GET"), QStringLiteral("/script"), query);
        QTRY_COMPARE(outcome->calls, 1);
        QCOMPARE(outcome->result.error, std::nullopt);
        QCOMPARE(m_engine->requests().size(), 1);
        QCOMPARE(m_engine->requests().first().rawQuery, seen);
    }

    // Percent sequences are sent exactly as given, read from the raw request line.
    void percentSequencesReachTheWireAsGiven_data()
    {
        QTest::addColumn<QString>("query");
        QTest::addColumn<QByteArray>("requestLine");
        QTest::newRow("unreserved letter")
            << "name=%41.lua" << QByteArray("GET /script?name=%41.lua HTTP/1.1");
        QTest::newRow("tilde") << "name=%7E.lua" << QByteArray("GET /script?name=%7E.lua HTTP/1.1");
        QTest::newRow("lower-case hex")
            << "name=a%2fb.lua" << QByteArray("GET /script?name=a%2fb.lua HTTP/1.1");
        QTest::newRow("space stays")
            << "name=a%20b.lua" << QByteArray("GET /script?name=a%20b.lua HTTP/1.1");
    }
    void percentSequencesReachTheWireAsGiven()
    {
        QFETCH(QString, query);
        QFETCH(QByteArray, requestLine);
        TPRawServer server(answering("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n"));
        QVERIFY(server.startAsTheEngine());
        const auto outcome = send(QStringLiteral("GET"), QStringLiteral("/script"), query);
        QTRY_COMPARE(outcome->calls, 1);
        QCOMPARE(outcome->result.status, 200);
        QCOMPARE(server.requests().size(), 1);
        QCOMPARE(server.requests().first().left(server.requests().first().indexOf("\r\n")),
                 requestLine);
    }

    void engineLogIsSilentByDefaultAndGivesOneLinePerRequestWhenOn()
    {
        static QStringList lines;
        lines.clear();
        const QtMessageHandler previous = qInstallMessageHandler(
            [](QtMsgType, const QMessageLogContext &context, const QString &text) {
                if (QByteArray(context.category) == "tp.engine")
                    lines.append(text);
            });
        const auto quiet = send(QStringLiteral("GET"), QStringLiteral("/scripts"), std::nullopt);
        QTRY_COMPARE(quiet->calls, 1);
        QVERIFY2(lines.isEmpty(), qPrintable(lines.join(u'|')));

        QLoggingCategory::setFilterRules(QStringLiteral("tp.engine.info=true"));
        m_engine->setDefaultAnswer(TPScriptedAnswer::withStatus(404));
        const auto logged =
            send(QStringLiteral("GET"), QStringLiteral("/script"), QStringLiteral("name=a.lua"));
        QTRY_COMPARE(logged->calls, 1);
        const auto invalid =
            send(QStringLiteral("GET"), QStringLiteral("/script"), QStringLiteral("name=a b.lua"));
        QTRY_COMPARE(invalid->calls, 1);
        QLoggingCategory::setFilterRules(QString());
        qInstallMessageHandler(previous);

        QCOMPARE(lines.size(), 2);
        static const QRegularExpression request(
            QStringLiteral("^GET /script\\?name=a\\.lua status 404 ms \\d+ error -$"));
        QVERIFY2(request.match(lines.at(0)).hasMatch(), qPrintable(lines.at(0)));
        QVERIFY2(lines.at(1).startsWith(QStringLiteral("GET /script fault")),
                 qPrintable(lines.at(1)));
    }

    void stoppedEngineGivesStatusZeroAndConnectionError()
    {
        TPPointEngineAPIAtNothing();
        const auto outcome = send(QStringLiteral("GET"), QStringLiteral("/scripts"), std::nullopt);
        QTRY_COMPARE(outcome->calls, 1);
        QCOMPARE(outcome->result.status, 0);
        verifyTransportError(outcome->result, CURLE_COULDNT_CONNECT);
    }

    // Neither limit ends a request early: the completion comes no sooner than 5 s after the
    // call, with libcurl's time-out, for an engine that never answers and for one that
    // drips a byte every second (never idle, never done).
    void theWholeRequestLimitEndsAnAnswerThatNeverComesOrNeverEnds_data()
    {
        QTest::addColumn<bool>("drips");
        QTest::newRow("hangs") << false;
        QTest::newRow("drips a byte every second") << true;
    }
    void theWholeRequestLimitEndsAnAnswerThatNeverComesOrNeverEnds()
    {
        QFETCH(bool, drips);
        TPRawServer server([drips](TPRawConnection &connection) {
            if (connection.readRequest().isEmpty())
                return;
            if (drips && !connection.write("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n"))
                return;
            while (!connection.stopping()) {
                connection.pause(1000);
                if (drips && !connection.write("x"))
                    return;
            }
        });
        QVERIFY(server.startAsTheEngine());
        QElapsedTimer clock;
        clock.start();
        const auto outcome = send(QStringLiteral("GET"), QStringLiteral("/scripts"), std::nullopt);
        QTRY_COMPARE_WITH_TIMEOUT(outcome->calls, 1, 20000);
        QVERIFY2(clock.elapsed() >= TPEngineAPI::TimeoutMs, QByteArray::number(clock.elapsed()));
        QCOMPARE(outcome->result.status, drips ? 200 : 0);
        verifyTransportError(outcome->result, CURLE_OPERATION_TIMEDOUT);
    }

    // A head that the time limit or the engine cuts short is no answer: the completion
    // has status 0, though the status line came.
    void aHeadCutShortHasNoStatus_data()
    {
        QTest::addColumn<bool>("engineCloses");
        QTest::addColumn<int>("code");
        QTest::newRow("the time limit ends it") << false << int(CURLE_OPERATION_TIMEDOUT);
        QTest::newRow("the engine closes") << true << int(CURLE_PARTIAL_FILE);
    }
    void aHeadCutShortHasNoStatus()
    {
        QFETCH(bool, engineCloses);
        QFETCH(int, code);
        const auto outcome = listFrom([engineCloses](TPRawConnection &connection) {
            if (connection.readRequest().isEmpty() ||
                !connection.write("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n") || engineCloses)
                return;
            while (!connection.stopping())
                connection.pause(100);
        });
        QCOMPARE(outcome->calls, 1);
        QCOMPARE(outcome->result.status, 0);
        QVERIFY(outcome->result.error.has_value());
        QCOMPARE(outcome->result.error->code, code);
        QCOMPARE(outcome->result.body, std::nullopt);
    }

    // A request that waits for one of the connections, all held by answers that never come,
    // times out saying so, not as if a name could not be resolved. Its time runs out as the
    // others' do, so it may or may not have had a connection in the end: either way it says
    // that it waited.
    void aRequestThatWaitedForAConnectionSaysSoWhenItTimesOut()
    {
        TPRawServer server(holdUntilStopped);
        QVERIFY(server.startAsTheEngine());
        const int requests = int(TPEngineSession::MaxConnections) + 1;
        std::vector<std::shared_ptr<Outcome>> outcomes;
        for (int i = 0; i < requests; ++i)
            outcomes.push_back(
                send(QStringLiteral("GET"), QStringLiteral("/script"), QStringLiteral("name=a")));
        QTRY_COMPARE(server.requests().size(), qsizetype(TPEngineSession::MaxConnections));
        QTRY_VERIFY_WITH_TIMEOUT(std::all_of(outcomes.cbegin(), outcomes.cend(),
                                             [](const auto &outcome) { return outcome->calls; }),
                                 20000);
        QStringList waited;
        for (const auto &outcome : outcomes) {
            verifyTransportError(outcome->result, CURLE_OPERATION_TIMEDOUT);
            QCOMPARE(outcome->result.status, 0);
            const QString message = outcome->result.error->localizedDescription;
            QVERIFY2(!message.contains(QStringLiteral("resolve")), qPrintable(message));
            if (message.contains(QStringLiteral("waiting for a connection to the engine")))
                waited.append(message);
        }
        QCOMPARE(waited.size(), 1);
    }

    // A request that waited for a connection, had one, and then ran out of time says how
    // much of its time went to the wait, not only the little that was left after it.
    void aRequestThatHadAConnectionLateSaysHowLongItWaited()
    {
        TPRawServer server(holdUntilStopped);
        QVERIFY(server.startAsTheEngine());
        std::vector<std::shared_ptr<Outcome>> holders;
        for (int i = 0; i < int(TPEngineSession::MaxConnections); ++i)
            holders.push_back(
                send(QStringLiteral("GET"), QStringLiteral("/script"), QStringLiteral("name=a")));
        QTRY_COMPARE(server.requests().size(), qsizetype(TPEngineSession::MaxConnections));
        const auto late =
            send(QStringLiteral("GET"), QStringLiteral("/script"), QStringLiteral("name=b"));
        QTRY_COMPARE_WITH_TIMEOUT(late->calls, 1, 20000);
        QCOMPARE(server.requests().size(), qsizetype(TPEngineSession::MaxConnections) + 1);
        verifyTransportError(late->result, CURLE_OPERATION_TIMEDOUT);
        const QString message = late->result.error->localizedDescription;
        static const QRegularExpression said(
            QStringLiteral("timed out after (\\d+) ms, (\\d+) ms of them waiting for a "
                           "connection to the engine"));
        const QRegularExpressionMatch match = said.match(message);
        QVERIFY2(match.hasMatch(), qPrintable(message));
        const int total = match.captured(1).toInt();
        const int waiting = match.captured(2).toInt();
        QVERIFY2(total >= TPEngineAPI::TimeoutMs, qPrintable(message));
        QVERIFY2(waiting > TPEngineAPI::TimeoutMs / 2 && waiting < total, qPrintable(message));
    }

    // An answer after four quiet seconds is well inside both limits and is delivered.
    void anAnswerAfterFourQuietSecondsIsDelivered()
    {
        TPRawServer server([](TPRawConnection &connection) {
            if (connection.readRequest().isEmpty())
                return;
            connection.pause(4000);
            if (connection.write("HTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\nlate"))
                connection.drainUntilClosed();
        });
        QVERIFY(server.startAsTheEngine());
        const auto outcome = send(QStringLiteral("GET"), QStringLiteral("/scripts"), std::nullopt);
        QTRY_COMPARE_WITH_TIMEOUT(outcome->calls, 1, 20000);
        QCOMPARE(outcome->result.error, std::nullopt);
        QCOMPARE(outcome->result.status, 200);
        QCOMPARE(outcome->result.body, std::optional<QByteArray>("late"));
    }

    void bodyCutOffMidwayIsATransportError()
    {
        m_engine->setDefaultAnswer(TPScriptedAnswer::failing(TPScriptedAnswer::Fault::CutBody));
        const auto outcome =
            send(QStringLiteral("GET"), QStringLiteral("/script"), QStringLiteral("name=a.lua"));
        QTRY_COMPARE(outcome->calls, 1);
        QCOMPARE(outcome->result.status, 200);
        verifyTransportError(outcome->result, CURLE_PARTIAL_FILE);
    }

    void droppedConnectionIsATransportError()
    {
        m_engine->setDefaultAnswer(TPScriptedAnswer::failing(TPScriptedAnswer::Fault::Drop));
        const auto outcome = send(QStringLiteral("GET"), QStringLiteral("/scripts"), std::nullopt);
        QTRY_COMPARE(outcome->calls, 1);
        QCOMPARE(outcome->result.status, 0);
        verifyTransportError(outcome->result, CURLE_GOT_NOTHING);
    }

    void aConnectionResetInTheAnswerIsATransportError()
    {
        const auto outcome = listFrom([](TPRawConnection &connection) {
            if (connection.readRequest().isEmpty() ||
                !connection.write("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\npart"))
                return;
            connection.pause(100);
            connection.resetOnClose();
        });
        QCOMPARE(outcome->calls, 1);
        verifyTransportError(outcome->result, CURLE_RECV_ERROR);
    }

    // What goes on the wire: the request line with the target as given, then only the
    // stack's own headers, then the body.
    void theRequestOnTheWireIsExactlyThis_data()
    {
        QTest::addColumn<QString>("method");
        QTest::addColumn<QString>("query");
        QTest::addColumn<std::optional<QByteArray>>("body");
        QTest::addColumn<QByteArray>("expected");
        QTest::newRow("listing") << "GET" << QString() << std::optional<QByteArray>()
                                 << QByteArray("GET /x HTTP/1.1\r\nHost: 127.0.0.1:PORT\r\n\r\n");
        QTest::newRow("save") << "POST"
                              << "name=a.lua" << std::optional<QByteArray>("hi\r\n")
                              << QByteArray("POST /x?name=a.lua HTTP/1.1\r\nHost: 127.0.0.1:PORT"
                                            "\r\nContent-Length: 4\r\n\r\nhi\r\n");
        QTest::newRow("empty body") << "POST"
                                    << "name=b.lua" << std::optional<QByteArray>("")
                                    << QByteArray("POST /x?name=b.lua HTTP/1.1\r\nHost: "
                                                  "127.0.0.1:PORT\r\nContent-Length: 0\r\n\r\n");
        QTest::newRow("no body") << "POST"
                                 << "name=c" << std::optional<QByteArray>()
                                 << QByteArray("POST /x?name=c HTTP/1.1\r\nHost: "
                                               "127.0.0.1:PORT\r\n\r\n");
        QTest::newRow("delete") << "DELETE"
                                << "name=d.lua" << std::optional<QByteArray>()
                                << QByteArray("DELETE /x?name=d.lua HTTP/1.1\r\nHost: "
                                              "127.0.0.1:PORT\r\n\r\n");
    }
    void theRequestOnTheWireIsExactlyThis()
    {
        QFETCH(QString, method);
        QFETCH(QString, query);
        QFETCH(std::optional<QByteArray>, body);
        QFETCH(QByteArray, expected);
        TPRawServer server(answering("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n"));
        QVERIFY(server.startAsTheEngine());
        expected.replace("PORT", QByteArray::number(server.port()));
        const auto outcome = send(method, QStringLiteral("/x"), query, body);
        QTRY_COMPARE(outcome->calls, 1);
        QCOMPARE(server.requests(), QList<QByteArray>{expected});
    }

    // A large save goes out whole, with no "Expect: 100-continue" wait.
    void aLargeBodyIsSentWholeWithoutAskingToContinue()
    {
        const QByteArray body(3 * 1024 * 1024, 'a');
        const auto outcome = send(QStringLiteral("POST"), QStringLiteral("/script"),
                                  QStringLiteral("name=big.lua"), body);
        QTRY_COMPARE(outcome->calls, 1);
        QCOMPARE(outcome->result.status, 200);
        QCOMPARE(m_engine->requests().size(), 1);
        QCOMPARE(m_engine->requests().first().body.size(), body.size());
        QVERIFY(m_engine->requests().first().header("expect").isEmpty());
    }

    // Answers framed every way HTTP allows reach the completion as the engine meant them,
    // whether they arrive at once or in pieces.
    void everyFramingOfTheAnswerGivesItsBody_data()
    {
        QTest::addColumn<QByteArray>("answer");
        QTest::addColumn<bool>("closeAfter");
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("body");
        QTest::newRow("length") << QByteArray(
                                       "HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nline\r\nend")
                                << false << 200 << QByteArray("line\r\nend");
        QTest::newRow("bytes after the body are not the body")
            << QByteArray("HTTP/1.1 404 Not Found\r\nContent-Length: 2\r\n\r\nnoMORE") << true
            << 404 << QByteArray("no");
        QTest::newRow("empty body") << QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n")
                                    << false << 200 << QByteArray();
        QTest::newRow("chunks") << QByteArray(
                                       "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n"
                                       "6\r\nline\r\n\r\n3\r\nend\r\n0\r\n\r\n")
                                << false << 200 << QByteArray("line\r\nend");
        QTest::newRow("chunks, extensions and trailers")
            << QByteArray("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n"
                          "4;name=x\r\nprin\r\n9\r\nt('hi')\r\n\r\n0\r\nTrailer: 1\r\n\r\n")
            << false << 200 << QByteArray("print('hi')\r\n");
        QTest::newRow("HTTP/1.0 until the connection ends")
            << QByteArray("HTTP/1.0 200 OK\r\n\r\nline\r\nend") << true << 200
            << QByteArray("line\r\nend");
        QTest::newRow("after interim answers")
            << QByteArray("HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 102 Processing\r\n\r\n"
                          "HTTP/1.1 201 Created\r\nContent-Length: 1\r\n\r\nx")
            << false << 201 << QByteArray("x");
        QTest::newRow("no content has no body")
            << QByteArray("HTTP/1.1 204 No Content\r\nContent-Length: 3\r\n\r\n") << false << 204
            << QByteArray();
        QTest::newRow("not modified has no body")
            << QByteArray("HTTP/1.1 304 Not Modified\r\nContent-Length: 3\r\n\r\n") << false << 304
            << QByteArray();
        QTest::newRow("bare line feeds") << QByteArray("HTTP/1.1 200 OK\nContent-Length: 2\n\nok")
                                         << false << 200 << QByteArray("ok");
        QTest::newRow("header names in any case")
            << QByteArray("HTTP/1.1 200 OK\r\ncOnTeNt-LeNgTh:   3  \r\n\r\nabc") << false << 200
            << QByteArray("abc");
        QTest::newRow("a length repeated on one line")
            << QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 5, 5\r\n\r\nhello") << false << 200
            << QByteArray("hello");
        QTest::newRow("a length repeated on two lines")
            << QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 5\r\nContent-Length:5\r\n\r\nhello")
            << false << 200 << QByteArray("hello");
        QTest::newRow("a status with no reason")
            << QByteArray("HTTP/1.1 500\r\nContent-Length: 1\r\n\r\nz") << false << 500
            << QByteArray("z");
    }
    void everyFramingOfTheAnswerGivesItsBody()
    {
        QFETCH(QByteArray, answer);
        QFETCH(bool, closeAfter);
        QFETCH(int, status);
        QFETCH(QByteArray, body);
        QList<QByteArray> pieces;
        for (qsizetype at = 0; at < answer.size(); at += 7)
            pieces.append(answer.mid(at, 7));
        for (const bool inPieces : {false, true}) {
            const auto outcome =
                listFrom(answering(inPieces ? pieces : QList<QByteArray>{answer}, 5, closeAfter));
            QCOMPARE(outcome->calls, 1);
            verifyAnswered(outcome->result, status, body);
        }
    }

    // The status line, the headers and interim answers may each arrive in segments of
    // their own, with pauses between them, as an engine that writes them separately sends
    // them.
    void theHeadSplitOverSeveralWritesIsRead_data()
    {
        QTest::addColumn<QList<QByteArray>>("pieces");
        QTest::newRow("status line, then the headers")
            << QList<QByteArray>{"HTTP/1.1 200 OK\r\n", "Content-Length: 2\r\n\r\nok"};
        QTest::newRow("the status line itself split") << QList<QByteArray>{
            "HTT", "P/1.1 2", "00 OK\r", "\nContent-Length: 2\r\n", "\r\n", "ok"};
        QTest::newRow("an interim answer on its own") << QList<QByteArray>{
            "HTTP/1.1 100 Continue\r\n\r\n", "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok"};
        QTest::newRow("early hints with headers")
            << QList<QByteArray>{"HTTP/1.1 103 Early Hints\r\nLink: </a.css>; rel=preload\r\n",
                                 "\r\n", "HTTP/1.1 200 OK\r\n", "Content-Length: 2\r\n\r\n", "ok"};
    }
    void theHeadSplitOverSeveralWritesIsRead()
    {
        QFETCH(QList<QByteArray>, pieces);
        const auto outcome = listFrom(answering(pieces, 80, false));
        QCOMPARE(outcome->calls, 1);
        verifyAnswered(outcome->result, 200, "ok");
    }

    // A header folded onto a line of its own (obs-fold) is read, not refused.
    void aFoldedHeaderLineIsRead_data()
    {
        QTest::addColumn<QByteArray>("fold");
        QTest::newRow("space") << QByteArray(" ");
        QTest::newRow("tab") << QByteArray("\t");
    }
    void aFoldedHeaderLineIsRead()
    {
        QFETCH(QByteArray, fold);
        const auto outcome = listFrom(answering("HTTP/1.1 200 OK\r\nX-Note: first\r\n" + fold +
                                                "second\r\nContent-Length: 2\r\n\r\nok"));
        QCOMPARE(outcome->calls, 1);
        verifyAnswered(outcome->result, 200, "ok");
    }

    // The client asks for no transfer coding, so an answer in one other than chunked can
    // be framed neither by its Content-Length nor by chunks, and its body cannot be read
    // as the engine meant it: it is refused, never delivered as a short success, and a
    // coding that merely looks like "chunked" is not taken for it.
    void aTransferCodingOtherThanChunkedIsRefused_data()
    {
        QTest::addColumn<QByteArray>("coding");
        QTest::addColumn<QByteArray>("body");
        QTest::newRow("gzip") << QByteArray("gzip")
                              << QByteArray::fromHex("1f8b08000000000002034b4c4a4e494d4bcf0000502a"
                                                     "efae08000000");
        QTest::newRow("unknown") << QByteArray("x-private") << QByteArray("abcdefgh");
        QTest::newRow("not quite chunked")
            << QByteArray("xchunked") << QByteArray("3\r\nabc\r\n0\r\n\r\n");
        QTest::newRow("gzip, then chunked")
            << QByteArray("gzip, chunked") << QByteArray("3\r\nabc\r\n0\r\n\r\n");
    }
    void aTransferCodingOtherThanChunkedIsRefused()
    {
        QFETCH(QByteArray, coding);
        QFETCH(QByteArray, body);
        const auto outcome = listFrom(answering("HTTP/1.1 200 OK\r\nTransfer-Encoding: " + coding +
                                                    "\r\nContent-Length: 3\r\n\r\n" + body,
                                                true));
        QCOMPARE(outcome->calls, 1);
        QCOMPARE(outcome->result.status, 200);
        verifyTransportError(outcome->result, CURLE_BAD_CONTENT_ENCODING);
    }

    // Two different lengths leave the body's end unknown, so the answer is refused; the
    // same length repeated frames it as one would.
    void conflictingContentLengthsAreRefused_data()
    {
        QTest::addColumn<QByteArray>("lengths");
        QTest::newRow("on two lines") << QByteArray("Content-Length: 5\r\nContent-Length: 7");
        QTest::newRow("on one line") << QByteArray("Content-Length: 5, 7");
        QTest::newRow("a third that differs")
            << QByteArray("Content-Length: 5, 5\r\ncontent-length: 7");
    }
    void conflictingContentLengthsAreRefused()
    {
        QFETCH(QByteArray, lengths);
        const auto outcome =
            listFrom(answering("HTTP/1.1 200 OK\r\n" + lengths + "\r\n\r\nhello, world", true));
        QCOMPARE(outcome->calls, 1);
        verifyTransportError(outcome->result, CURLE_WEIRD_SERVER_REPLY);
        QVERIFY(outcome->result.error->localizedDescription.contains(
            QStringLiteral("conflicting Content-Length")));
    }

    // An engine that refuses a large save at once is heard at once, not after the limit.
    void anEarlyFinalAnswerDuringAnUploadIsDelivered()
    {
        TPRawServer server([](TPRawConnection &connection) {
            // The head of the request only: the body is still on its way.
            char head[4096];
            pollfd watched{connection.fd(), POLLIN, 0};
            if (::poll(&watched, 1, 10000) <= 0 ||
                ::recv(connection.fd(), head, sizeof head, 0) <= 0)
                return;
            if (connection.write("HTTP/1.1 413 Content Too Large\r\nContent-Length: 8\r\n\r\n"
                                 "too big!"))
                connection.drainUntilClosed();
        });
        QVERIFY(server.startAsTheEngine());
        const QByteArray body(64 * 1024 * 1024, 'x');
        QElapsedTimer clock;
        clock.start();
        const auto outcome = send(QStringLiteral("POST"), QStringLiteral("/script"),
                                  QStringLiteral("name=big.lua"), body);
        QTRY_COMPARE_WITH_TIMEOUT(outcome->calls, 1, 20000);
        QCOMPARE(outcome->result.error, std::nullopt);
        QCOMPARE(outcome->result.status, 413);
        QCOMPARE(outcome->result.body, std::optional<QByteArray>("too big!"));
    }

    // An answer that never ends ends in a transport error, within the limits, with its
    // memory bounded and nothing delivered as a body.
    void anEndlessAnswerEndsInATransportError_data()
    {
        QTest::addColumn<QByteArray>("head");
        QTest::addColumn<QByteArray>("piece");
        const QByteArray block(1024 * 1024, 'x');
        QTest::newRow("until the connection ends")
            << QByteArray("HTTP/1.0 200 OK\r\n\r\n") << block;
        QTest::newRow("endless chunks")
            << QByteArray("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n")
            << QByteArray("100000\r\n" + block + "\r\n");
    }
    void anEndlessAnswerEndsInATransportError()
    {
        QFETCH(QByteArray, head);
        QFETCH(QByteArray, piece);
        TPRawServer server([head, piece](TPRawConnection &connection) {
            if (connection.readRequest().isEmpty() || !connection.write(head))
                return;
            while (connection.write(piece)) {
            }
        });
        QVERIFY(server.startAsTheEngine());
        const auto outcome = send(QStringLiteral("GET"), QStringLiteral("/scripts"), std::nullopt);
        QTRY_COMPARE_WITH_TIMEOUT(outcome->calls, 1, 20000);
        QCOMPARE(outcome->result.status, 200);
        QVERIFY(outcome->result.error.has_value());
        QCOMPARE(outcome->result.body, std::nullopt);
        QVERIFY2(outcome->result.error->code == CURLE_FILESIZE_EXCEEDED ||
                     outcome->result.error->code == CURLE_OPERATION_TIMEDOUT,
                 qPrintable(outcome->result.error->localizedDescription));
    }

    // An answer that says at once that it is too large is refused before it is read.
    void anAnswerAnnouncedAsTooLargeIsRefused()
    {
        const auto outcome = listFrom(
            answering("HTTP/1.1 200 OK\r\nContent-Length: " +
                      QByteArray::number(TPEngineSession::MaxBodyBytes + 1) + "\r\n\r\nxyz"));
        QCOMPARE(outcome->calls, 1);
        verifyTransportError(outcome->result, CURLE_FILESIZE_EXCEEDED);
    }

    // Many requests at once: each completes exactly once, and the engine never sees more
    // than six connections at a time; the rest wait inside the stack.
    void fiveHundredRequestsCompleteOnceOverAtMostSixConnections()
    {
        TPRawServer server([](TPRawConnection &connection) {
            for (;;) {
                const QByteArray request = connection.readRequest();
                if (request.isEmpty())
                    return;
                const QByteArray target = request.split(' ').value(1);
                connection.pause(2);
                if (!connection.write("HTTP/1.1 200 OK\r\nContent-Length: " +
                                      QByteArray::number(target.size()) + "\r\n\r\n" + target))
                    return;
            }
        });
        QVERIFY(server.startAsTheEngine());
        constexpr int kRequests = 500;
        QList<int> calls(kRequests, 0);
        QList<bool> answered(kRequests, false);
        for (int i = 0; i < kRequests; ++i) {
            const QString query = QStringLiteral("name=%1.lua").arg(i);
            TPEngineAPI::requestMethod(
                QStringLiteral("GET"), QStringLiteral("/script"), query, std::nullopt,
                [&calls, &answered, i, query](const std::optional<QByteArray> &body, int status,
                                              const TPEngineAPI::Error &error) {
                    ++calls[i];
                    answered[i] = !error && status == 200 && body == "/script?" + query.toLatin1();
                });
        }
        QTRY_COMPARE_WITH_TIMEOUT(calls.count(1), kRequests, 30000);
        QCOMPARE(calls, QList<int>(kRequests, 1));
        QCOMPARE(answered.count(true), kRequests);
        QVERIFY2(server.mostOpenAtOnce() <= int(TPEngineSession::MaxConnections),
                 QByteArray::number(server.mostOpenAtOnce()));
        QCOMPARE(server.requests().size(), kRequests);
    }

    void anAnswerThatIsNotHttpIsATransportError()
    {
        const auto outcome = listFrom(answering("SSH-2.0-OpenSSH\r\n\r\n"));
        QCOMPARE(outcome->calls, 1);
        QCOMPARE(outcome->result.status, 0);
        QCOMPARE(outcome->result.body, std::nullopt);
        QVERIFY(outcome->result.error.has_value());
        QCOMPARE(outcome->result.error->domain, QStringLiteral("libcurl"));
        QVERIFY(outcome->result.error->code != CURLE_OK);
        QVERIFY(!outcome->result.error->localizedDescription.isEmpty());
    }

    void errorStatusWithBodyIsDeliveredAsPlainStatus_data()
    {
        QTest::addColumn<int>("status");
        QTest::newRow("404") << 404;
        QTest::newRow("400") << 400;
        QTest::newRow("401") << 401;
        QTest::newRow("407") << 407;
        QTest::newRow("409") << 409;
        QTest::newRow("500") << 500;
        QTest::newRow("503") << 503;
    }
    void errorStatusWithBodyIsDeliveredAsPlainStatus()
    {
        QFETCH(int, status);
        m_engine->setDefaultAnswer(TPScriptedAnswer::withStatus(status, "no such file"));
        const auto outcome = send(QStringLiteral("GET"), QStringLiteral("/script"),
                                  QStringLiteral("name=missing.lua"));
        QTRY_COMPARE(outcome->calls, 1);
        QCOMPARE(outcome->result.status, status);
        QCOMPARE(outcome->result.body, std::optional<QByteArray>("no such file"));
        QCOMPARE(outcome->result.error, std::nullopt);
    }

    void completionRunsOnceOnMainThreadAfterTheCallReturns_data()
    {
        QTest::addColumn<QString>("query");
        QTest::addColumn<bool>("engineUp");
        QTest::newRow("answered") << "name=a.lua" << true;
        QTest::newRow("invalid url") << "name=a b" << true;
        QTest::newRow("transport error") << "name=a.lua" << false;
    }
    void completionRunsOnceOnMainThreadAfterTheCallReturns()
    {
        QFETCH(QString, query);
        QFETCH(bool, engineUp);
        if (!engineUp)
            TPPointEngineAPIAtNothing();
        const auto outcome = send(QStringLiteral("GET"), QStringLiteral("/script"), query);
        QTRY_COMPARE(outcome->calls, 1);
        QVERIFY(outcome->ranOnMainThread);
        QVERIFY(outcome->ranAfterReturn);
        TPPointEngineAPIAt(m_engine->port());
        QVERIFY(m_engine->flush());
        QCOMPARE(outcome->calls, 1);
    }

    void callFromAnotherThreadCompletesOnTheMainThread()
    {
        auto outcome = std::make_shared<Outcome>();
        std::thread worker([outcome] {
            TPEngineAPI::requestMethod(
                QStringLiteral("GET"), QStringLiteral("/scripts"), std::nullopt, std::nullopt,
                Outcome::recorder<std::optional<QByteArray>, int, TPEngineAPI::Error>(outcome));
            outcome->markReturned();
        });
        worker.join();
        QTRY_COMPARE(outcome->calls, 1);
        QVERIFY(outcome->ranOnMainThread);
        QCOMPARE(outcome->result.status, 200);
        QCOMPARE(m_engine->requests().size(), 1);
    }

    void concurrentRequestsCompleteInTheOrderTheyFinish()
    {
        m_engine->setResponder([](const TPRecordedRequest &request) {
            TPScriptedAnswer answer = TPScriptedAnswer::ok(request.rawQuery.toUtf8());
            answer.delayMs = request.rawQuery == QLatin1String("name=slow") ? 600 : 0;
            return answer;
        });
        QStringList order;
        for (const char *name : {"name=slow", "name=fast"}) {
            TPEngineAPI::requestMethod(
                QStringLiteral("GET"), QStringLiteral("/script"), QString::fromLatin1(name),
                std::nullopt,
                [&order](const std::optional<QByteArray> &body, int, const TPEngineAPI::Error &) {
                    order.append(QString::fromLatin1(body.value_or("?")));
                });
        }
        QTRY_COMPARE(order.size(), 2);
        QCOMPARE(order, QStringList({"name=fast", "name=slow"}));
    }
};

QTEST_GUILESS_MAIN(TestTPEngineAPIRequest)
#include "tst_tpengineapi_request.moc"
