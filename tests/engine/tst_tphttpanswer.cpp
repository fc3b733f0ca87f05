#include "tphttpanswer.h"

#include <QRandomGenerator>
#include <QTest>

#include <cstring>

namespace {

using State = TPHttpAnswer::State;

// The answer read from `bytes` given all at once, then the connection's end when `close`.
TPHttpAnswer readWhole(const QByteArray &bytes, bool close = false)
{
    TPHttpAnswer answer;
    answer.received(bytes.constData(), bytes.size());
    if (close)
        answer.closed();
    return answer;
}

// The same bytes given one at a time.
TPHttpAnswer readByteByByte(const QByteArray &bytes, bool close = false)
{
    TPHttpAnswer answer;
    for (const char byte : bytes)
        answer.received(&byte, 1);
    if (close)
        answer.closed();
    return answer;
}

} // namespace

class TestTPHttpAnswer : public QObject
{
    Q_OBJECT

private slots:
    void answersReadTheSameWholeOrAByteAtATime_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<bool>("close");
        QTest::addColumn<int>("state");
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("body");

        QTest::newRow("length") << QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\nhello")
                                << false << int(State::Complete) << 200 << QByteArray("hello");
        QTest::newRow("bytes after the body are not the body")
            << QByteArray("HTTP/1.1 404 Not Found\r\nContent-Length: 2\r\n\r\nnoMORE") << false
            << int(State::Complete) << 404 << QByteArray("no");
        QTest::newRow("empty body") << QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n")
                                    << false << int(State::Complete) << 200 << QByteArray();
        QTest::newRow("chunks, extensions and trailers")
            << QByteArray("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n"
                          "4;name=x\r\nprin\r\n9\r\nt('hi')\r\n\r\n0\r\nTrailer: 1\r\n\r\n")
            << false << int(State::Complete) << 200 << QByteArray("print('hi')\r\n");
        QTest::newRow("chunks win over a length")
            << QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 99\r\n"
                          "Transfer-Encoding: gzip, chunked\r\n\r\n2\r\nok\r\n0\r\n\r\n")
            << false << int(State::Complete) << 200 << QByteArray("ok");
        QTest::newRow("until the connection ends")
            << QByteArray("HTTP/1.0 200 OK\r\n\r\nall of it") << true << int(State::Complete) << 200
            << QByteArray("all of it");
        QTest::newRow("interim answers are skipped")
            << QByteArray("HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 102 Processing\r\n\r\n"
                          "HTTP/1.1 201 Created\r\nContent-Length: 1\r\n\r\nx")
            << false << int(State::Complete) << 201 << QByteArray("x");
        QTest::newRow("no content has no body")
            << QByteArray("HTTP/1.1 204 No Content\r\nContent-Length: 3\r\n\r\n") << false
            << int(State::Complete) << 204 << QByteArray();
        QTest::newRow("bare line feeds")
            << QByteArray("HTTP/1.1 200 OK\nContent-Length: 2\n\nok") << false
            << int(State::Complete) << 200 << QByteArray("ok");
        QTest::newRow("header names in any case")
            << QByteArray("HTTP/1.1 200 OK\r\ncOnTeNt-LeNgTh:   3  \r\n\r\nabc") << false
            << int(State::Complete) << 200 << QByteArray("abc");
        QTest::newRow("blank lines before the status line")
            << QByteArray("\r\n\r\nHTTP/1.1 200 OK\r\nContent-Length: 1\r\n\r\nz") << false
            << int(State::Complete) << 200 << QByteArray("z");
        QTest::newRow("a status with no reason")
            << QByteArray("HTTP/1.1 500\r\nContent-Length: 1\r\n\r\nz") << false
            << int(State::Complete) << 500 << QByteArray("z");
    }
    void answersReadTheSameWholeOrAByteAtATime()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(bool, close);
        QFETCH(int, state);
        QFETCH(int, status);
        QFETCH(QByteArray, body);
        for (const TPHttpAnswer &answer : {readWhole(bytes, close), readByteByByte(bytes, close)}) {
            QCOMPARE(int(answer.state()), state);
            QCOMPARE(answer.status(), status);
            QCOMPARE(answer.body(), body);
        }
    }

    void whatIsNotAWholeAnswerIsMalformed_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<bool>("close");
        QTest::newRow("not HTTP") << QByteArray("hello there\r\n\r\n") << false;
        QTest::newRow("status not three digits") << QByteArray("HTTP/1.1 20 OK\r\n\r\n") << false;
        QTest::newRow("status with a letter") << QByteArray("HTTP/1.1 2x0 OK\r\n\r\n") << false;
        QTest::newRow("status run on") << QByteArray("HTTP/1.1 2000 OK\r\n\r\n") << false;
        QTest::newRow("header without a colon")
            << QByteArray("HTTP/1.1 200 OK\r\nno colon\r\n\r\n") << false;
        QTest::newRow("two lengths that differ")
            << QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 1\r\nContent-Length: 2\r\n\r\n")
            << false;
        QTest::newRow("a length with a sign")
            << QByteArray("HTTP/1.1 200 OK\r\nContent-Length: -1\r\n\r\n") << false;
        QTest::newRow("a bad chunk size")
            << QByteArray("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\n") << false;
        QTest::newRow("a chunk longer than it says")
            << QByteArray("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n1\r\nab\r\n")
            << false;
        QTest::newRow("a huge chunk size")
            << QByteArray("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n"
                          "ffffffffffffffffff\r\n")
            << false;
        QTest::newRow("cut off in the head") << QByteArray("HTTP/1.1 200 OK\r\nContent-Le") << true;
        QTest::newRow("cut off in the body")
            << QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\n12345") << true;
        QTest::newRow("cut off in the chunks")
            << QByteArray("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n2\r\nok\r\n")
            << true;
        QTest::newRow("nothing at all") << QByteArray() << true;
    }
    void whatIsNotAWholeAnswerIsMalformed()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(bool, close);
        QCOMPARE(readWhole(bytes, close).state(), State::Malformed);
        QCOMPARE(readByteByByte(bytes, close).state(), State::Malformed);
    }

    void anOverlongHeadIsMalformed()
    {
        const QByteArray head =
            "HTTP/1.1 200 OK\r\nX: " + QByteArray(TPHttpAnswer::MaxHeadBytes, 'a') + "\r\n\r\n";
        QCOMPARE(readWhole(head).state(), State::Malformed);
        QByteArray manyHeaders = "HTTP/1.1 200 OK\r\n";
        while (manyHeaders.size() <= 2 * TPHttpAnswer::MaxHeadBytes)
            manyHeaders += "X-Name: value\r\n";
        QCOMPARE(readWhole(manyHeaders + "\r\n").state(), State::Malformed);
    }

    void theStatusIsZeroUntilTheHeadIsIn()
    {
        TPHttpAnswer answer;
        const QByteArray head = "HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 200 OK\r\n";
        answer.received(head.constData(), head.size());
        QCOMPARE(answer.state(), State::Head);
        QCOMPARE(answer.status(), 0);
    }

    // The body leaves room after its bytes for a reader that looks ahead, and a length the
    // answer claims but never sends does not claim memory past a fixed bound.
    void theBodyKeepsRoomAfterItAndTrustsNoHugeLength()
    {
        const TPHttpAnswer answer = readWhole("HTTP/1.1 200 OK\r\nContent-Length: 100000\r\n\r\n" +
                                              QByteArray(100000, 'x'));
        QCOMPARE(answer.state(), State::Complete);
        QVERIFY(answer.body().capacity() - answer.body().size() >= TPHttpAnswer::ReadAheadRoom);

        const TPHttpAnswer lying =
            readWhole("HTTP/1.1 200 OK\r\nContent-Length: 999999999999999\r\n\r\nabc", true);
        QCOMPARE(lying.state(), State::Malformed);
        QVERIFY(lying.body().capacity() <= qsizetype(256) * 1024 * 1024 + 1024);
    }

    // Bytes written straight into the body's block count as received.
    void bytesWrittenStraightIntoTheBodyAreTheBody()
    {
        TPHttpAnswer answer;
        qsizetype room = 0;
        QCOMPARE(answer.directSpace(room), nullptr);
        const QByteArray head = "HTTP/1.1 200 OK\r\nContent-Length: 6\r\n\r\nab";
        answer.received(head.constData(), head.size());
        char *space = answer.directSpace(room);
        QVERIFY(space);
        QCOMPARE(room, 4);
        std::memcpy(space, "cd", 2);
        answer.directWritten(2);
        QCOMPARE(answer.state(), State::Body);
        QCOMPARE(answer.body(), QByteArray("abcd"));
        space = answer.directSpace(room);
        QCOMPARE(room, 2);
        std::memcpy(space, "ef", 2);
        answer.directWritten(2);
        QCOMPARE(answer.state(), State::Complete);
        QCOMPARE(answer.body(), QByteArray("abcdef"));
        QCOMPARE(answer.directSpace(room), nullptr);

        TPHttpAnswer chunked = readWhole("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n");
        QCOMPARE(chunked.directSpace(room), nullptr);
    }

    // A large body of unknown length grows as it arrives and comes out whole.
    void aLargeBodyOfUnknownLengthComesOutWhole()
    {
        QByteArray body(3 * 1024 * 1024 + 17, Qt::Uninitialized);
        QRandomGenerator random(5);
        for (char &byte : body)
            byte = char(random.bounded(256));
        TPHttpAnswer answer;
        const QByteArray head = "HTTP/1.1 200 OK\r\n\r\n";
        answer.received(head.constData(), head.size());
        for (qsizetype at = 0; at < body.size(); at += 70001)
            answer.received(body.constData() + at, std::min<qsizetype>(70001, body.size() - at));
        QCOMPARE(answer.state(), State::Body);
        answer.closed();
        QCOMPARE(answer.state(), State::Complete);
        QVERIFY(answer.body() == body);
    }
};

QTEST_MAIN(TestTPHttpAnswer)
#include "tst_tphttpanswer.moc"
