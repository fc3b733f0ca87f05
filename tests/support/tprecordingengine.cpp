#include "tprecordingengine.h"

#include "engine/tpengineapi.h"
#include "tptestutil.h"

#include <QTcpSocket>
#include <QTest>
#include <QTimer>

#include <memory>

namespace {

// The marker path of flush(); no operation of the app uses it.
constexpr auto kFlushPath = "/tp-test-flush";

// Writes a response head that announces more body than will ever come.
void writeLongHead(QTcpSocket *socket)
{
    socket->write("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\nContent-Type: text/plain\r\n\r\n");
}

QByteArray reasonPhrase(int status)
{
    switch (status) {
    case 200:
        return "OK";
    case 204:
        return "No Content";
    case 404:
        return "Not Found";
    case 500:
        return "Internal Server Error";
    default:
        return "Status";
    }
}

void writeAnswer(QTcpSocket *socket, int status, const QByteArray &body)
{
    socket->write("HTTP/1.1 " + QByteArray::number(status) + ' ' + reasonPhrase(status) +
                  "\r\nContent-Type: application/octet-stream\r\nContent-Length: " +
                  QByteArray::number(body.size()) + "\r\n\r\n" + body);
}

// Takes one whole request off the front of `buffer`: the request line, the headers as they
// came, and a body of Content-Length bytes. Nothing when the request is not all there yet.
std::optional<TPRecordedRequest> takeRequest(QByteArray &buffer)
{
    const qsizetype headEnd = buffer.indexOf("\r\n\r\n");
    if (headEnd < 0)
        return std::nullopt;
    const QList<QByteArray> lines = buffer.left(headEnd).split('\n');
    TPRecordedRequest request;
    qsizetype contentLength = 0;
    for (qsizetype i = 1; i < lines.size(); ++i) {
        const QByteArray line = lines.at(i).chopped(lines.at(i).endsWith('\r') ? 1 : 0);
        const qsizetype colon = line.indexOf(':');
        if (colon <= 0)
            continue;
        const QByteArray name = line.left(colon);
        const QByteArray value = line.mid(colon + 1).trimmed();
        if (name.compare("Content-Length", Qt::CaseInsensitive) == 0)
            contentLength = value.toLongLong();
        request.headers.append({name, value});
    }
    const qsizetype bodyStart = headEnd + 4;
    if (buffer.size() < bodyStart + contentLength)
        return std::nullopt;

    const QList<QByteArray> requestLine = lines.first().trimmed().split(' ');
    request.method = requestLine.value(0);
    const QByteArray target = requestLine.value(1);
    const qsizetype question = target.indexOf('?');
    request.path = QString::fromLatin1(question < 0 ? target : target.left(question));
    request.hasQuery = question >= 0;
    if (request.hasQuery)
        request.rawQuery = QString::fromLatin1(target.mid(question + 1));
    request.body = buffer.mid(bodyStart, contentLength);
    buffer.remove(0, bodyStart + contentLength);
    return request;
}

} // namespace

QByteArray TPRecordedRequest::header(const QByteArray &name) const
{
    for (const auto &[key, value] : headers) {
        if (key.compare(name, Qt::CaseInsensitive) == 0)
            return value;
    }
    return {};
}

QList<QByteArray> TPRecordedRequest::headerNames() const
{
    QList<QByteArray> names;
    for (const auto &header : headers)
        names.append(header.first.toLower());
    return names;
}

TPRecordingEngine::TPRecordingEngine(QObject *parent) : QObject(parent)
{
    connect(&m_server, &QTcpServer::newConnection, this, &TPRecordingEngine::onNewConnection);
}

bool TPRecordingEngine::startAsTheEngine()
{
    if (!m_server.listen(QHostAddress::LocalHost, 0))
        return false;
    m_port = m_server.serverPort();
    TPPointEngineAPIAt(m_port);
    return true;
}

bool TPRecordingEngine::flush()
{
    auto done = std::make_shared<bool>(false);
    TPEngineAPI::requestMethod(
        QStringLiteral("GET"), QString::fromLatin1(kFlushPath), std::nullopt, std::nullopt,
        [done](std::optional<QByteArray>, int, TPEngineAPI::Error) { *done = true; });
    return QTest::qWaitFor([done] { return *done; }, 10000);
}

void TPRecordingEngine::onNewConnection()
{
    while (QTcpSocket *socket = m_server.nextPendingConnection()) {
        socket->setParent(this);
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] { readRequests(socket); });
        connect(socket, &QTcpSocket::disconnected, this, [this, socket] {
            m_received.remove(socket);
            socket->deleteLater();
        });
    }
}

void TPRecordingEngine::readRequests(QTcpSocket *socket)
{
    QByteArray &buffer = m_received[socket];
    buffer += socket->readAll();
    while (const std::optional<TPRecordedRequest> request = takeRequest(buffer))
        handle(socket, *request);
}

void TPRecordingEngine::handle(QTcpSocket *socket, const TPRecordedRequest &request)
{
    if (request.path == QLatin1String(kFlushPath)) {
        writeAnswer(socket, 204, {});
        return;
    }
    const TPScriptedAnswer scripted = nextAnswer(request);
    m_requests.append(request);
    emit requestRecorded();
    answer(socket, scripted);
}

QString TPRecordingEngine::baseAddress() const
{
    return QStringLiteral("http://127.0.0.1:%1").arg(m_port);
}

TPScriptedAnswer TPRecordingEngine::nextAnswer(const TPRecordedRequest &request)
{
    if (m_responder)
        return m_responder(request);
    if (!m_queue.isEmpty())
        return m_queue.takeFirst();
    return m_defaultAnswer;
}

void TPRecordingEngine::answer(QTcpSocket *socket, const TPScriptedAnswer &scripted)
{
    using Fault = TPScriptedAnswer::Fault;
    switch (scripted.fault) {
    case Fault::Hang:
        return;
    case Fault::Drop:
        QTimer::singleShot(0, socket, [socket] { socket->abort(); });
        return;
    case Fault::CutBody:
        writeLongHead(socket);
        socket->write("partial");
        socket->flush();
        QTimer::singleShot(50, socket, [socket] { socket->disconnectFromHost(); });
        return;
    case Fault::Trickle: {
        writeLongHead(socket);
        // Bounded: 60 bytes at most, so the server stops by itself.
        auto *timer = new QTimer(socket);
        auto sent = std::make_shared<int>(0);
        QObject::connect(timer, &QTimer::timeout, socket, [socket, timer, sent] {
            socket->write("x");
            if (++*sent >= 60)
                timer->stop();
        });
        timer->start(300);
        return;
    }
    case Fault::None:
        break;
    }

    const auto respond = [socket, scripted] {
        writeAnswer(socket, scripted.status, scripted.body);
    };
    // Precise: a coarse timer may answer up to 5% late, past a limit the test stays under.
    if (scripted.delayMs > 0)
        QTimer::singleShot(scripted.delayMs, Qt::PreciseTimer, socket, respond);
    else
        respond();
}
