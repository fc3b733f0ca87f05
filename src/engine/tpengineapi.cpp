#include "engine/tpengineapi.h"

#include "engine/tpenginesession.h"
#include "foundation/tplog.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMutex>
#include <QStringDecoder>
#include <QStringEncoder>
#include <QUrl>

#include <cmath>
#include <limits>

namespace {

constexpr auto kInvalidUrlMessage = "URL không hợp lệ";

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

// The URL a request goes to, when its text is one. It is only checked: what is sent is the
// text itself, so that percent sequences reach the engine as given.
std::optional<QUrl> strictUrl(const QString &text)
{
    if (!hasOnlyUrlCharacters(text))
        return std::nullopt;
    QUrl url(text, QUrl::StrictMode);
    if (!url.isValid() || url.scheme().isEmpty() || url.host().isEmpty())
        return std::nullopt;
    return url;
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

// The request for a URL that passed the strict check. The target is the text after the
// base address exactly as given, up to any "#": a fragment is never sent.
TPEngineSession::Request sessionRequest(const QString &method, const QUrl &url,
                                        const QString &target,
                                        const std::optional<QByteArray> &body)
{
    const QByteArray sent = target.left(target.indexOf(u'#')).toLatin1();
    return {url.scheme().toLatin1() + "://" + url.authority(QUrl::FullyEncoded).toLatin1(), sent,
            method.toLatin1(), body, method + u' ' + QString::fromLatin1(sent)};
}

// Sends one request and hands its outcome to the main thread. `reader`, when given, reads
// the body while it arrives.
void send(const QString &method, const QString &path, const std::optional<QString> &query,
          const std::optional<QByteArray> &body, TPEngineSession::BodyReader reader,
          TPEngineAPI::RequestCompletion completion)
{
    const bool hasQuery = query && !query->isEmpty();
    const QString target = hasQuery ? path + u'?' + *query : path;
    const std::optional<QUrl> url = strictUrl(TPEngineAPI::baseAddress() + target);
    if (!url) {
        qCInfo(tpEngineLog).noquote() << method << path << "fault: not a strictly valid URL, "
                                      << "nothing sent";
        postToMain([completion = std::move(completion)] {
            completion(std::nullopt, 0, TPEngineAPI::errorMsg(message(kInvalidUrlMessage)));
        });
        return;
    }
    TPEngineAPI::session()->start(
        sessionRequest(method, *url, target, body), std::move(reader),
        [completion = std::move(completion)](std::optional<QByteArray> delivered, int status,
                                             std::optional<TPError> error) {
            postToMain([completion, delivered = std::move(delivered), status, error] {
                completion(delivered, status, error);
            });
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

TPEngineSession *TPEngineAPI::session()
{
    return TPEngineSession::shared();
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
    send(method, path, query, body, nullptr, std::move(completion));
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

QString TPEngineAPI::entryPath(const QJsonValue &entry)
{
    const QJsonValue path = entry.toObject().value(QLatin1String("path"));
    return path.isString() ? path.toString() : QString();
}

void TPEngineAPI::scriptsBodyWithCompletion(BodyReader reader, BodyCompletion completion)
{
    send(QStringLiteral("GET"), QStringLiteral("/scripts"), std::nullopt, std::nullopt,
         std::move(reader),
         [completion = std::move(completion)](const std::optional<QByteArray> &body, int,
                                              const Error &error) {
             if (error || !body)
                 completion({}, error ? error : errorMsg(message("Engine offline (:8090)")));
             else
                 completion(*body, std::nullopt);
         });
}

void TPEngineAPI::readScript(const QString &path, TextCompletion completion)
{
    readScriptData(path, [completion = std::move(completion)](
                             const std::optional<QByteArray> &bytes, const Error &error) {
        if (error)
            completion(std::nullopt, error);
        else
            // Bytes that are not UTF-8 read as an empty text, not as a failure.
            completion(scriptText(*bytes).value_or(QString()), std::nullopt);
    });
}

void TPEngineAPI::readScriptData(const QString &path, DataCompletion completion)
{
    requestMethod(QStringLiteral("GET"), QStringLiteral("/script"), nameQuery(path), std::nullopt,
                  [completion = std::move(completion)](const std::optional<QByteArray> &body,
                                                       int status, const Error &error) {
                      if (error)
                          completion(std::nullopt, error);
                      else if (status == 200)
                          completion(body.value_or(QByteArray()), std::nullopt);
                      else
                          completion(std::nullopt, errorMsg(message("Không đọc được file")));
                  });
}

std::optional<QString> TPEngineAPI::scriptText(const QByteArray &bytes)
{
    // A leading byte-order mark is part of the file and stays in the text, so that saving
    // gives it back.
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless |
                                                     QStringDecoder::Flag::ConvertInitialBom);
    const QString text = decoder.decode(bytes);
    if (decoder.hasError())
        return std::nullopt;
    return text;
}

bool TPEngineAPI::canCarryPath(const QString &path)
{
    return strictUrl(baseAddress() + QStringLiteral("/script?") + nameQuery(path)).has_value();
}

QByteArray TPEngineAPI::scriptData(const QString &content)
{
    // Text that cannot be encoded (a lone surrogate) empties the file rather than failing.
    QStringEncoder encoder(QStringEncoder::Utf8, QStringEncoder::Flag::Stateless);
    QByteArray bytes = encoder.encode(content);
    if (encoder.hasError())
        bytes.clear();
    return bytes;
}

void TPEngineAPI::saveScript(const QString &path, const QString &content, Completion completion)
{
    saveScriptData(path, scriptData(content), std::move(completion));
}

void TPEngineAPI::saveScriptData(const QString &path, const QByteArray &bytes,
                                 Completion completion)
{
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
