#include "tprecordingengine.h"

#include "tptestutil.h"

#include <QHttpServerRequest>
#include <QHttpServerResponder>
#include <QMetaEnum>
#include <QPointer>
#include <QTcpSocket>
#include <QTimer>
#include <QUrl>

#include <memory>

namespace {

QByteArray methodName(QHttpServerRequest::Method method)
{
    return QByteArray(QMetaEnum::fromType<QHttpServerRequest::Method>().valueToKey(int(method)))
        .toUpper();
}

// Writes a response head that announces more body than will ever come.
void writeLongHead(QTcpSocket *socket)
{
    socket->write("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\nContent-Type: text/plain\r\n\r\n");
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

TPRecordingEngine::TPRecordingEngine(QObject *parent) : QAbstractHttpServer(parent) {}

bool TPRecordingEngine::startAsTheEngine()
{
    m_port = listen(QHostAddress::LocalHost, 0);
    if (m_port == 0)
        return false;
    TPPointEngineAPIAt(m_port);
    return true;
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

bool TPRecordingEngine::handleRequest(const QHttpServerRequest &request, QTcpSocket *socket)
{
    TPRecordedRequest recorded;
    recorded.method = methodName(request.method());
    recorded.path = request.url().path(QUrl::FullyEncoded);
    recorded.hasQuery = request.url().hasQuery();
    recorded.rawQuery = request.url().query(QUrl::FullyEncoded);
    recorded.headers = request.headers();
    recorded.body = request.body();
    const TPScriptedAnswer scripted = nextAnswer(recorded);
    m_requests.append(recorded);
    emit requestRecorded();
    answer(request, socket, scripted);
    return true;
}

void TPRecordingEngine::missingHandler(const QHttpServerRequest &, QTcpSocket *) {}

void TPRecordingEngine::answer(const QHttpServerRequest &request, QTcpSocket *socket,
                               const TPScriptedAnswer &scripted)
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

    auto responder = std::make_shared<QHttpServerResponder>(makeResponder(request, socket));
    const auto respond = [responder, scripted] {
        responder->write(scripted.body, {{"Content-Type", "application/octet-stream"}},
                         QHttpServerResponder::StatusCode(scripted.status));
    };
    // Precise: a coarse timer may answer up to 5% late, past a limit the test stays under.
    if (scripted.delayMs > 0)
        QTimer::singleShot(scripted.delayMs, Qt::PreciseTimer, socket, respond);
    else
        respond();
}
