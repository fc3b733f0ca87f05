#include "tpengineapi.h"
#include "tpenginecalls.h"
#include "tpoutcome.h"
#include "tprecordingengine.h"

#include "tptestutil.h"

#include <QElapsedTimer>
#include <QLoggingCategory>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTest>

#include <cerrno>
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

// A bare loopback server the client is pointed at, for tests that read or write the raw
// bytes of an exchange.
class Wire
{
public:
    bool listen()
    {
        if (!m_server.listen(QHostAddress::LocalHost, 0))
            return false;
        TPPointEngineAPIAt(m_server.serverPort());
        return true;
    }
    quint16 port() const { return m_server.serverPort(); }
    // The client's connection once it has made one, or null after 5 s.
    QTcpSocket *accept()
    {
        return m_server.waitForNewConnection(5000) ? m_server.nextPendingConnection() : nullptr;
    }

private:
    QTcpServer m_server;
};

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

    // The listing's body is read while it arrives, off the main thread (a large one on a
    // thread of its own, while the rest is still coming), always as a prefix of the body,
    // and whole once before the completion runs on the main thread.
    void listingBodyIsReadOffTheMainThreadBeforeTheCompletion_data()
    {
        QTest::addColumn<int>("padding");
        QTest::addColumn<bool>("readAlongside");
        QTest::newRow("small, read between receives") << 300000 << false;
        QTest::newRow("large, read alongside") << 6000000 << true;
    }
    void listingBodyIsReadOffTheMainThreadBeforeTheCompletion()
    {
        QFETCH(int, padding);
        QFETCH(bool, readAlongside);
        QByteArray listing = "{\"entries\":[" + QByteArray(padding, ' ') + "]}";
        for (qsizetype i = 0; i < listing.size(); i += 1000)
            listing[i] = i % 2000 ? ' ' : '\n';
        m_engine->setDefaultAnswer(TPScriptedAnswer::ok(listing));
        struct Reads
        {
            std::mutex mutex;
            QList<std::thread::id> threads;
            std::thread::id partialThread;
            std::thread::id wholeThread;
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
                reads->threads.append(std::this_thread::get_id());
                if (complete) {
                    reads->wholeThread = std::this_thread::get_id();
                    reads->wholeBodies.append(received);
                    return;
                }
                reads->partialThread = std::this_thread::get_id();
                ++reads->partial;
                reads->allPrefixes = reads->allPrefixes && received.size() < listing.size() &&
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
        QVERIFY(reads->partial >= 1);
        QVERIFY(reads->allPrefixes);
        QCOMPARE(reads->partialThread != reads->wholeThread, readAlongside);
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
        Wire wire;
        QVERIFY(wire.listen());
        const auto outcome = send(QStringLiteral("GET"), QStringLiteral("/script"), query);
        QTcpSocket *socket = wire.accept();
        QVERIFY(socket);
        QTRY_VERIFY(socket->canReadLine());
        QCOMPARE(socket->readLine().trimmed(), requestLine);
        socket->write("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
        QTRY_COMPARE(outcome->calls, 1);
        QCOMPARE(outcome->result.status, 200);
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
        QCOMPARE(outcome->result.body, std::nullopt);
        QVERIFY(outcome->result.error.has_value());
        QCOMPARE(outcome->result.error->domain, QStringLiteral("POSIX"));
        QCOMPARE(outcome->result.error->code, ECONNREFUSED);
        QVERIFY(!outcome->result.error->localizedDescription.isEmpty());
    }

    void hangingEngineTimesOutAfterFiveSeconds()
    {
        m_engine->setDefaultAnswer(TPScriptedAnswer::failing(TPScriptedAnswer::Fault::Hang));
        QElapsedTimer clock;
        clock.start();
        const auto outcome = send(QStringLiteral("GET"), QStringLiteral("/scripts"), std::nullopt);
        QTRY_COMPARE_WITH_TIMEOUT(outcome->calls, 1, 15000);
        const qint64 elapsed = clock.elapsed();
        QVERIFY2(elapsed >= 5000 && elapsed < 10000, QByteArray::number(elapsed));
        QCOMPARE(outcome->result.status, 0);
        QVERIFY(outcome->result.error.has_value());
        QCOMPARE(outcome->result.error->code, ETIMEDOUT);
    }

    // Neither limit may end a request early: an answer that starts just before 5 s, after
    // nothing for that long, is delivered.
    void answerJustBeforeTheLimitIsDelivered()
    {
        TPScriptedAnswer late = TPScriptedAnswer::ok("late");
        late.delayMs = 4850;
        m_engine->setDefaultAnswer(late);
        const auto outcome = send(QStringLiteral("GET"), QStringLiteral("/scripts"), std::nullopt);
        QTRY_COMPARE_WITH_TIMEOUT(outcome->calls, 1, 15000);
        QCOMPARE(outcome->result.error, std::nullopt);
        QCOMPARE(outcome->result.status, 200);
        QCOMPARE(outcome->result.body, std::optional<QByteArray>("late"));
    }

    void tricklingAnswerIsCutAtTheWholeRequestLimit()
    {
        m_engine->setDefaultAnswer(TPScriptedAnswer::failing(TPScriptedAnswer::Fault::Trickle));
        QElapsedTimer clock;
        clock.start();
        const auto outcome =
            send(QStringLiteral("GET"), QStringLiteral("/script"), QStringLiteral("name=a.lua"));
        QTRY_COMPARE_WITH_TIMEOUT(outcome->calls, 1, 15000);
        const qint64 elapsed = clock.elapsed();
        QVERIFY2(elapsed >= 5000 && elapsed < 10000, QByteArray::number(elapsed));
        QVERIFY(outcome->result.error.has_value());
        QCOMPARE(outcome->result.error->code, ETIMEDOUT);
        QCOMPARE(outcome->result.body, std::nullopt);
    }

    void bodyCutOffMidwayIsATransportError()
    {
        m_engine->setDefaultAnswer(TPScriptedAnswer::failing(TPScriptedAnswer::Fault::CutBody));
        const auto outcome =
            send(QStringLiteral("GET"), QStringLiteral("/script"), QStringLiteral("name=a.lua"));
        QTRY_COMPARE(outcome->calls, 1);
        QVERIFY(outcome->result.error.has_value());
        QCOMPARE(outcome->result.error->domain, QStringLiteral("POSIX"));
        QCOMPARE(outcome->result.error->code, ECONNRESET);
        QCOMPARE(outcome->result.body, std::nullopt);
    }

    void droppedConnectionIsATransportError()
    {
        m_engine->setDefaultAnswer(TPScriptedAnswer::failing(TPScriptedAnswer::Fault::Drop));
        const auto outcome = send(QStringLiteral("GET"), QStringLiteral("/scripts"), std::nullopt);
        QTRY_COMPARE(outcome->calls, 1);
        QCOMPARE(outcome->result.status, 0);
        QVERIFY(outcome->result.error.has_value());
        QCOMPARE(outcome->result.error->domain, QStringLiteral("POSIX"));
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
                                 << QByteArray("GET /x HTTP/1.1\r\nHost: 127.0.0.1:PORT\r\n"
                                               "Connection: close\r\n\r\n");
        QTest::newRow("save") << "POST"
                              << "name=a.lua" << std::optional<QByteArray>("hi\r\n")
                              << QByteArray("POST /x?name=a.lua HTTP/1.1\r\nHost: 127.0.0.1:PORT"
                                            "\r\nContent-Length: 4\r\nConnection: close\r\n\r\n"
                                            "hi\r\n");
        QTest::newRow("empty body") << "POST"
                                    << "name=b.lua" << std::optional<QByteArray>("")
                                    << QByteArray("POST /x?name=b.lua HTTP/1.1\r\nHost: "
                                                  "127.0.0.1:PORT\r\nContent-Length: 0\r\n"
                                                  "Connection: close\r\n\r\n");
    }
    void theRequestOnTheWireIsExactlyThis()
    {
        QFETCH(QString, method);
        QFETCH(QString, query);
        QFETCH(std::optional<QByteArray>, body);
        QFETCH(QByteArray, expected);
        Wire wire;
        QVERIFY(wire.listen());
        expected.replace("PORT", QByteArray::number(wire.port()));
        const auto outcome = send(method, QStringLiteral("/x"), query, body);
        QTcpSocket *socket = wire.accept();
        QVERIFY(socket);
        QByteArray received;
        QTRY_VERIFY((received += socket->readAll()).size() >= expected.size());
        QCOMPARE(received, expected);
        socket->write("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
        QTRY_COMPARE(outcome->calls, 1);
    }

    // Answers framed every way HTTP allows reach the completion as the same body.
    void everyFramingOfTheAnswerGivesTheSameBody_data()
    {
        QTest::addColumn<QByteArray>("answer");
        QTest::addColumn<bool>("closeAfter");
        QTest::newRow("length") << QByteArray(
                                       "HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nline\r\nend")
                                << false;
        QTest::newRow("chunks") << QByteArray(
                                       "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n"
                                       "6\r\nline\r\n\r\n3\r\nend\r\n0\r\n\r\n")
                                << false;
        QTest::newRow("until the end") << QByteArray("HTTP/1.0 200 OK\r\n\r\nline\r\nend") << true;
        QTest::newRow("after an interim answer")
            << QByteArray("HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 200 OK\r\nContent-Length: 9\r\n"
                          "\r\nline\r\nend")
            << false;
    }
    void everyFramingOfTheAnswerGivesTheSameBody()
    {
        QFETCH(QByteArray, answer);
        QFETCH(bool, closeAfter);
        Wire wire;
        QVERIFY(wire.listen());
        const auto outcome =
            send(QStringLiteral("GET"), QStringLiteral("/script"), QStringLiteral("name=a.lua"));
        QTcpSocket *socket = wire.accept();
        QVERIFY(socket);
        QTRY_VERIFY(socket->bytesAvailable() > 0);
        socket->write(answer);
        if (closeAfter)
            socket->disconnectFromHost();
        QTRY_COMPARE(outcome->calls, 1);
        QCOMPARE(outcome->result.error, std::nullopt);
        QCOMPARE(outcome->result.status, 200);
        QCOMPARE(outcome->result.body, std::optional<QByteArray>("line\r\nend"));
    }

    void anAnswerThatIsNotHttpIsAProtocolError()
    {
        Wire wire;
        QVERIFY(wire.listen());
        const auto outcome = send(QStringLiteral("GET"), QStringLiteral("/scripts"), std::nullopt);
        QTcpSocket *socket = wire.accept();
        QVERIFY(socket);
        QTRY_VERIFY(socket->bytesAvailable() > 0);
        socket->write("SSH-2.0-OpenSSH\r\n\r\n");
        QTRY_COMPARE(outcome->calls, 1);
        QCOMPARE(outcome->result.status, 0);
        QCOMPARE(outcome->result.body, std::nullopt);
        QCOMPARE(outcome->result.error->domain, QStringLiteral("POSIX"));
        QCOMPARE(outcome->result.error->code, EPROTO);
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
