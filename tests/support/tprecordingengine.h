#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QPair>
#include <QString>
#include <QTcpServer>

#include <functional>

// One request as the engine saw it.
struct TPRecordedRequest
{
    QByteArray method;
    QString path;
    bool hasQuery = false;
    QString rawQuery;
    QList<QPair<QByteArray, QByteArray>> headers;
    QByteArray body;

    // The value of the first header of that name (case-insensitive), or empty.
    QByteArray header(const QByteArray &name) const;
    QList<QByteArray> headerNames() const;
};

// How the engine answers one request.
struct TPScriptedAnswer
{
    enum class Fault {
        None,    // a normal answer with `status` and `body`
        Hang,    // read the request, never answer
        Drop,    // close the connection without answering
        CutBody, // announce a long body, send part of it, close
        Trickle, // announce a long body and send it a byte every 300 ms
    };

    int status = 200;
    QByteArray body;
    int delayMs = 0;
    Fault fault = Fault::None;

    static TPScriptedAnswer ok(const QByteArray &body = {}) { return {200, body, 0, Fault::None}; }
    static TPScriptedAnswer withStatus(int status, const QByteArray &body = {})
    {
        return {status, body, 0, Fault::None};
    }
    static TPScriptedAnswer failing(Fault fault) { return {200, {}, 0, fault}; }
};

// A real HTTP server on 127.0.0.1 that records every request and answers as the test
// scripts it: a queue of answers first, then the default answer. It reads HTTP/1.1 itself
// from a plain TCP server, so that it records the request exactly as it came (the path and
// query as sent, the headers in order) and can misbehave at the socket level.
class TPRecordingEngine : public QObject
{
    Q_OBJECT
public:
    explicit TPRecordingEngine(QObject *parent = nullptr);

    // Listens on a free loopback port and makes it where TPEngineAPI sends its requests;
    // false when it cannot listen.
    bool startAsTheEngine();
    quint16 port() const { return m_port; }
    // "http://127.0.0.1:<port>"
    QString baseAddress() const;

    void setDefaultAnswer(const TPScriptedAnswer &answer) { m_defaultAnswer = answer; }
    void enqueueAnswer(const TPScriptedAnswer &answer) { m_queue.append(answer); }
    // Answers computed from the request; takes precedence over the queue when set.
    void setResponder(std::function<TPScriptedAnswer(const TPRecordedRequest &)> responder)
    {
        m_responder = std::move(responder);
    }

    const QList<TPRecordedRequest> &requests() const { return m_requests; }
    void clearRequests() { m_requests.clear(); }

    // Waits until every request the client started before has been answered or has failed:
    // a marker request is sent after them and waited for. The marker is answered here
    // without taking a scripted answer and is not recorded. False when it never completed.
    [[nodiscard]] bool flush();

signals:
    void requestRecorded();

private:
    void onNewConnection();
    void readRequests(QTcpSocket *socket);
    void handle(QTcpSocket *socket, const TPRecordedRequest &request);
    TPScriptedAnswer nextAnswer(const TPRecordedRequest &request);
    void answer(QTcpSocket *socket, const TPScriptedAnswer &scripted);

    QTcpServer m_server;
    quint16 m_port = 0;
    QHash<QTcpSocket *, QByteArray> m_received;
    TPScriptedAnswer m_defaultAnswer;
    QList<TPScriptedAnswer> m_queue;
    std::function<TPScriptedAnswer(const TPRecordedRequest &)> m_responder;
    QList<TPRecordedRequest> m_requests;
};
