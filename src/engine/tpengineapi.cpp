#include "tpengineapi.h"

#include "tplog.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMutex>
#include <QNetworkAccessManager>
#include <QNetworkProxy>
#include <QNetworkReply>
#include <QStringDecoder>
#include <QStringEncoder>
#include <QThread>
#include <QTimer>
#include <QUrl>

#include <cmath>
#include <limits>
#include <memory>
#include <mutex>

namespace {

constexpr auto kInvalidUrlMessage = "URL không hợp lệ";
constexpr auto kTransportDomain = "QNetworkReply";
constexpr auto kTimedOutProperty = "tpTimedOut";
// Bytes kept free after a received body.
constexpr qsizetype kReadAheadRoom = 64;
// What the network stack may hold before the body takes it: a large answer waits in the
// socket rather than in a second copy in memory.
constexpr qint64 kReadBufferBytes = 1024 * 1024;

struct BaseAddressHolder
{
    QMutex mutex;
    QString address = QString::fromLatin1(TPEngineAPI::BaseAddress);
};

BaseAddressHolder &baseAddressHolder()
{
    static BaseAddressHolder holder;
    return holder;
}

QString message(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

bool isHexDigit(char16_t unit)
{
    return (unit >= u'0' && unit <= u'9') || (unit >= u'a' && unit <= u'f') ||
           (unit >= u'A' && unit <= u'F');
}

// RFC 3986 allows only these characters in a URL, plus "%" followed by two hex digits.
// QUrl's strict mode alone is not enough: it takes non-ASCII letters as an IRI.
bool hasOnlyUrlCharacters(const QString &text)
{
    static const QString allowed = QStringLiteral(
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~:/?#[]@!$&'()*+,;=");
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar ch = text.at(i);
        if (ch == u'%') {
            if (i + 2 >= text.size() || !isHexDigit(text.at(i + 1).unicode()) ||
                !isHexDigit(text.at(i + 2).unicode()))
                return false;
            i += 2;
        } else if (!allowed.contains(ch)) {
            return false;
        }
    }
    return true;
}

// The URL a request goes to. The text is passed as given, with one exception that the
// network stack imposes: QUrl, which QNetworkAccessManager requires, keeps percent
// sequences in a normal form, so "%41" is sent as "A", "%7E" as "~" and "%2f" as "%2F".
// No public Qt API sends a request target byte for byte.
std::optional<QUrl> strictUrl(const QString &text)
{
    if (!hasOnlyUrlCharacters(text))
        return std::nullopt;
    QUrl url(text, QUrl::StrictMode);
    if (!url.isValid() || url.scheme().isEmpty() || url.host().isEmpty())
        return std::nullopt;
    return url;
}

// QNetworkReply reports HTTP error statuses as errors of its own; the engine client treats
// any answer with a status as delivered and leaves judging the status to each operation.
bool isHttpStatusError(QNetworkReply::NetworkError error)
{
    // A 407 from the engine itself is a status like any other, although the stack names
    // it after a proxy.
    return (error >= QNetworkReply::ContentAccessDenied &&
            error <= QNetworkReply::UnknownContentError) ||
           error == QNetworkReply::ProxyAuthenticationRequiredError ||
           error == QNetworkReply::ProtocolInvalidOperationError ||
           (error >= QNetworkReply::InternalServerError &&
            error <= QNetworkReply::UnknownServerError);
}

// Both limits end in a reply aborted by one of the client's two timers.
bool timedOut(QNetworkReply *reply)
{
    return reply->property(kTimedOutProperty).toBool();
}

// A timer that aborts `reply` as timed out when it fires. Precise: a coarse timer may fire
// up to 5% early, and no limit may end a request before its full time.
QTimer *abortTimer(QNetworkReply *reply)
{
    auto *timer = new QTimer(reply);
    timer->setSingleShot(true);
    timer->setTimerType(Qt::PreciseTimer);
    timer->setInterval(TPEngineAPI::TimeoutMs);
    QObject::connect(timer, &QTimer::timeout, reply, [reply] {
        reply->setProperty(kTimedOutProperty, true);
        reply->abort();
    });
    return timer;
}

TPError transportError(QNetworkReply *reply)
{
    if (timedOut(reply))
        return {message(kTransportDomain), QNetworkReply::TimeoutError,
                QCoreApplication::translate("QNetworkReply", "Operation timed out")};
    return {message(kTransportDomain), reply->error(), reply->errorString()};
}

// Runs `work` on the main thread after the current call has returned. The application
// object is looked up now, not when the session was made, so that the rule holds whichever
// came first; without one there is no main event loop to run it.
template <typename Work>
void postToMain(Work &&work)
{
    if (QCoreApplication *app = QCoreApplication::instance())
        QMetaObject::invokeMethod(app, std::forward<Work>(work), Qt::QueuedConnection);
}

// Moves what the reply has received to the end of `body`, growing it geometrically when
// the answer gave no Content-Length.
void appendAvailable(QNetworkReply *reply, QByteArray &body)
{
    const qint64 available = reply->bytesAvailable();
    if (available <= 0)
        return;
    const qsizetype start = body.size();
    if (body.capacity() - start < available + kReadAheadRoom)
        body.reserve(std::max(2 * body.capacity(), start + available + kReadAheadRoom));
    body.resize(start + available);
    const qint64 read = reply->read(body.data() + start, available);
    body.resize(start + std::max<qint64>(read, 0));
}

// Hands the finished reply's outcome to the main thread: the body and status when the
// engine answered, a transport error otherwise. `request` names it in the log.
void finishRequest(QNetworkReply *reply, QByteArray &body, const QString &request,
                   const QElapsedTimer &clock, const TPEngineAPI::RequestCompletion &completion)
{
    appendAvailable(reply, body);
    const QVariant statusAttribute = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    const int status = statusAttribute.isValid() ? statusAttribute.toInt() : 0;
    TPEngineAPI::Error error;
    std::optional<QByteArray> delivered;
    if (!timedOut(reply) && (reply->error() == QNetworkReply::NoError ||
                             (statusAttribute.isValid() && isHttpStatusError(reply->error()))))
        delivered = std::move(body);
    else
        error = transportError(reply);
    qCInfo(tpEngineLog).noquote() << request << "status" << status << "ms" << clock.elapsed()
                                  << "error" << (error ? error->localizedDescription : "-");
    reply->deleteLater();
    postToMain([completion, delivered = std::move(delivered), status, error] {
        completion(delivered, status, error);
    });
}

void startRequest(const QUrl &url, const QByteArray &method,
                  const std::optional<QByteArray> &upload,
                  const TPEngineAPI::RequestCompletion &completion)
{
    QElapsedTimer clock;
    clock.start();
    // For the log: the method and what was asked for, without the engine's address.
    const QString request = QString::fromLatin1(method) + u' ' +
                            url.toString(QUrl::RemoveScheme | QUrl::RemoveAuthority);
    QNetworkRequest networkRequest(url);
    QNetworkAccessManager *session = TPEngineAPI::session();
    QNetworkReply *reply = upload ? session->sendCustomRequest(networkRequest, method, *upload)
                                  : session->sendCustomRequest(networkRequest, method);
    reply->setReadBufferSize(kReadBufferBytes);

    // The idle limit: restarted whenever bytes move. The stack's own transfer timeout is
    // not used, since its timer is coarse.
    QTimer *idle = abortTimer(reply);
    const auto restartIdle = [idle] { idle->start(); };
    QObject::connect(reply, &QNetworkReply::uploadProgress, idle, restartIdle);
    QObject::connect(reply, &QNetworkReply::downloadProgress, idle, restartIdle);
    QObject::connect(reply, &QNetworkReply::metaDataChanged, idle, restartIdle);
    idle->start();
    // The whole-request limit.
    abortTimer(reply)->start();

    // The body is taken as it arrives, into one block sized from Content-Length, so that it
    // is never copied whole when the answer ends. The room left after the bytes lets a
    // reader that looks ahead (the listing decoder) read them in place.
    auto body = std::make_shared<QByteArray>();
    QObject::connect(reply, &QNetworkReply::metaDataChanged, reply, [reply, body] {
        const qint64 length = reply->header(QNetworkRequest::ContentLengthHeader).toLongLong();
        if (length > 0 && length < std::numeric_limits<qsizetype>::max() - kReadAheadRoom)
            body->reserve(qsizetype(length) + kReadAheadRoom);
    });
    QObject::connect(reply, &QNetworkReply::readyRead, reply,
                     [reply, body] { appendAvailable(reply, *body); });

    QObject::connect(reply, &QNetworkReply::finished, reply,
                     [reply, body, completion, clock, request] {
                         finishRequest(reply, *body, request, clock, completion);
                     });
}

// The completion of an operation that succeeds on status 200 alone.
TPEngineAPI::RequestCompletion judgedByStatus(const char *failureMessage,
                                              TPEngineAPI::Completion completion)
{
    return [failureMessage, completion = std::move(completion)](
               const std::optional<QByteArray> &, int status, const TPEngineAPI::Error &error) {
        if (error)
            completion(error);
        else if (status != 200)
            completion(TPEngineAPI::errorMsg(message(failureMessage)));
        else
            completion(std::nullopt);
    };
}

QString nameQuery(const QString &path)
{
    return QStringLiteral("name=") + path;
}

std::optional<QJsonValue> jsonValue(const QVariant &value);

std::optional<QJsonObject> jsonObject(const QVariantMap &map)
{
    QJsonObject object;
    for (auto it = map.constBegin(); it != map.constEnd(); ++it) {
        const auto member = jsonValue(it.value());
        if (!member)
            return std::nullopt;
        object.insert(it.key(), *member);
    }
    return object;
}

// The JSON form of a settings value, or none for a value JSON cannot represent
// (a non-finite number, a date, an unknown type, ...).
std::optional<QJsonValue> jsonValue(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::Bool:
        return QJsonValue(value.toBool());
    case QMetaType::Int:
    case QMetaType::Long:
    case QMetaType::LongLong:
    case QMetaType::Short:
    case QMetaType::UInt:
    case QMetaType::ULong:
    case QMetaType::UShort:
        return QJsonValue(value.toLongLong());
    case QMetaType::ULongLong: {
        const qulonglong number = value.toULongLong();
        if (number > qulonglong(std::numeric_limits<qint64>::max()))
            return QJsonValue(double(number));
        return QJsonValue(qint64(number));
    }
    case QMetaType::Double:
    case QMetaType::Float: {
        const double number = value.toDouble();
        if (!std::isfinite(number))
            return std::nullopt;
        return QJsonValue(number);
    }
    case QMetaType::QString:
        return QJsonValue(value.toString());
    case QMetaType::Nullptr:
        return QJsonValue(QJsonValue::Null);
    case QMetaType::QStringList:
    case QMetaType::QVariantList: {
        QJsonArray array;
        for (const QVariant &element : value.toList()) {
            const auto converted = jsonValue(element);
            if (!converted)
                return std::nullopt;
            array.append(*converted);
        }
        return QJsonValue(array);
    }
    case QMetaType::QVariantMap:
    case QMetaType::QVariantHash: {
        const auto object = jsonObject(value.toMap());
        if (!object)
            return std::nullopt;
        return QJsonValue(*object);
    }
    default:
        return std::nullopt;
    }
}

} // namespace

namespace {

// The thread the session lives on, made with it.
QThread *deliveryThread()
{
    static QThread *const thread = [] {
        auto *delivery = new QThread;
        delivery->setObjectName(QStringLiteral("TPEngineAPI delivery"));
        return delivery;
    }();
    return thread;
}

// Starts the delivery thread the first time a request is sent with an application object
// present: a thread's event loop needs one, and there is nothing to deliver to before.
void startDelivery()
{
    static std::once_flag started;
    if (!QCoreApplication::instance())
        return;
    std::call_once(started, [] {
        QThread *delivery = deliveryThread();
        delivery->start();
        // The thread ends with the application object, before Qt's own globals go away.
        qAddPostRoutine([] {
            deliveryThread()->quit();
            deliveryThread()->wait();
        });
    });
}

} // namespace

QNetworkAccessManager *TPEngineAPI::session()
{
    // Created once, whichever thread asks first. It lives on a delivery thread of its own:
    // every request is started there and every answer is received there, so that a large
    // body never passes through the main thread. Completions are handed to the main thread.
    static QNetworkAccessManager *const shared = [] {
        auto *manager = new QNetworkAccessManager;
        // The engine is on loopback: a proxy from the environment must never be used.
        manager->setProxy(QNetworkProxy::NoProxy);
        manager->moveToThread(deliveryThread());
        QObject::connect(deliveryThread(), &QThread::finished, manager, &QObject::deleteLater);
        return manager;
    }();
    return shared;
}

TPError TPEngineAPI::errorMsg(const QString &text)
{
    return {QString::fromLatin1(ErrorDomain), -1, text};
}

QString TPEngineAPI::baseAddress()
{
    BaseAddressHolder &holder = baseAddressHolder();
    const QMutexLocker lock(&holder.mutex);
    return holder.address;
}

void TPEngineAPI::setBaseAddressForTesting(const QString &address)
{
    BaseAddressHolder &holder = baseAddressHolder();
    const QMutexLocker lock(&holder.mutex);
    holder.address = address;
}

void TPEngineAPI::requestMethod(const QString &method, const QString &path,
                                const std::optional<QString> &query,
                                const std::optional<QByteArray> &body, RequestCompletion completion)
{
    const bool hasQuery = query && !query->isEmpty();
    const QString urlText = hasQuery ? baseAddress() + path + u'?' + *query : baseAddress() + path;
    const std::optional<QUrl> url = strictUrl(urlText);
    if (!url) {
        qCInfo(tpEngineLog).noquote() << method << path << "fault: not a strictly valid URL, "
                                      << "nothing sent";
        postToMain([completion = std::move(completion)] {
            completion(std::nullopt, 0, errorMsg(message(kInvalidUrlMessage)));
        });
        return;
    }
    const QByteArray verb = method.toLatin1();
    startDelivery();
    QMetaObject::invokeMethod(
        session(),
        [url = *url, verb, body, completion = std::move(completion)] {
            startRequest(url, verb, body, completion);
        },
        Qt::QueuedConnection);
}

void TPEngineAPI::scriptsWithCompletion(ListCompletion completion)
{
    requestMethod(QStringLiteral("GET"), QStringLiteral("/scripts"), std::nullopt, std::nullopt,
                  [completion = std::move(completion)](const std::optional<QByteArray> &body, int,
                                                       const Error &error) {
                      if (error || !body) {
                          completion({},
                                     error ? error : errorMsg(message("Engine offline (:8090)")));
                          return;
                      }
                      // The status is deliberately not examined: any "entries" array is a listing.
                      if (const std::optional<QJsonArray> entries = listingEntries(*body))
                          completion(*entries, std::nullopt);
                      else
                          completion({}, errorMsg(message("Dữ liệu /scripts không hợp lệ")));
                  });
}

std::optional<QJsonArray> TPEngineAPI::listingEntries(const QByteArray &body)
{
    const QJsonDocument document = QJsonDocument::fromJson(body);
    const QJsonValue entries = document.isObject()
                                   ? document.object().value(QLatin1String("entries"))
                                   : QJsonValue(QJsonValue::Undefined);
    if (!entries.isArray())
        return std::nullopt;
    return entries.toArray();
}

void TPEngineAPI::scriptsBodyWithCompletion(BodyCompletion completion)
{
    requestMethod(QStringLiteral("GET"), QStringLiteral("/scripts"), std::nullopt, std::nullopt,
                  [completion = std::move(completion)](const std::optional<QByteArray> &body, int,
                                                       const Error &error) {
                      if (error || !body)
                          completion({},
                                     error ? error : errorMsg(message("Engine offline (:8090)")));
                      else
                          completion(*body, std::nullopt);
                  });
}

void TPEngineAPI::readScript(const QString &path, TextCompletion completion)
{
    requestMethod(QStringLiteral("GET"), QStringLiteral("/script"), nameQuery(path), std::nullopt,
                  [completion = std::move(completion)](const std::optional<QByteArray> &body,
                                                       int status, const Error &error) {
                      if (error) {
                          completion(std::nullopt, error);
                      } else if (status == 200) {
                          // Bytes that are not UTF-8 read as an empty text, not as a failure.
                          // A leading byte-order mark is part of the file and stays in the
                          // text, so that saving gives it back.
                          QStringDecoder decoder(QStringDecoder::Utf8,
                                                 QStringDecoder::Flag::Stateless |
                                                     QStringDecoder::Flag::ConvertInitialBom);
                          const QString text = decoder.decode(body.value_or(QByteArray()));
                          completion(decoder.hasError() ? QString() : text, std::nullopt);
                      } else {
                          completion(std::nullopt, errorMsg(message("Không đọc được file")));
                      }
                  });
}

bool TPEngineAPI::canCarryPath(const QString &path)
{
    return strictUrl(baseAddress() + QStringLiteral("/script?") + nameQuery(path)).has_value();
}

void TPEngineAPI::saveScript(const QString &path, const QString &content, Completion completion)
{
    // Text that cannot be encoded (a lone surrogate) empties the file rather than failing.
    QStringEncoder encoder(QStringEncoder::Utf8, QStringEncoder::Flag::Stateless);
    QByteArray bytes = encoder.encode(content);
    if (encoder.hasError())
        bytes.clear();
    requestMethod(QStringLiteral("POST"), QStringLiteral("/script"), nameQuery(path), bytes,
                  judgedByStatus("Lưu thất bại", std::move(completion)));
}

void TPEngineAPI::deleteScript(const QString &path, Completion completion)
{
    requestMethod(QStringLiteral("DELETE"), QStringLiteral("/script"), nameQuery(path),
                  std::nullopt, judgedByStatus("Xoá thất bại", std::move(completion)));
}

void TPEngineAPI::createScript(const QString &path, Completion completion)
{
    requestMethod(QStringLiteral("POST"), QStringLiteral("/script"), nameQuery(path), QByteArray(),
                  judgedByStatus("Tạo file thất bại", std::move(completion)));
}

void TPEngineAPI::createFolder(const QString &path, Completion completion)
{
    requestMethod(QStringLiteral("POST"), QStringLiteral("/mkdir"), nameQuery(path), std::nullopt,
                  judgedByStatus("Tạo folder thất bại", std::move(completion)));
}

void TPEngineAPI::runFile(const QString &path, Completion completion)
{
    requestMethod(QStringLiteral("GET"), QStringLiteral("/runfile"), nameQuery(path), std::nullopt,
                  judgedByStatus("Chạy thất bại", std::move(completion)));
}

void TPEngineAPI::renameScript(const QString &from, const QString &to, Completion completion)
{
    requestMethod(QStringLiteral("POST"), QStringLiteral("/rename"),
                  QStringLiteral("from=%1&to=%2").arg(from, to), std::nullopt,
                  judgedByStatus("Đổi tên thất bại", std::move(completion)));
}

std::optional<QByteArray> TPEngineAPI::settingsBody(const QVariantMap &settings)
{
    const auto document = jsonObject(settings);
    if (!document)
        return std::nullopt;
    return QJsonDocument(*document).toJson(QJsonDocument::Compact);
}

void TPEngineAPI::postSettings(const QVariantMap &settings)
{
    const auto body = settingsBody(settings);
    if (!body)
        return;
    requestMethod(QStringLiteral("POST"), QStringLiteral("/settings"), std::nullopt, *body,
                  [](const std::optional<QByteArray> &, int, const Error &) {});
}
