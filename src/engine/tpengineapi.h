#pragma once

#include "engine/tpenginelimits.h"
#include "engine/tpenginesession.h"
#include "engine/tperror.h"

#include <QByteArray>
#include <QJsonArray>
#include <QString>
#include <QVariantMap>

#include <functional>
#include <optional>

// The only code that speaks HTTP: the engine's protocol on 127.0.0.1:8090.
// Every completion runs exactly once, on the main thread, after the call has returned.
class TPEngineAPI
{
public:
    using Error = std::optional<TPError>;
    using RequestCompletion =
        std::function<void(std::optional<QByteArray> body, int status, Error error)>;
    using ListCompletion = std::function<void(QJsonArray entries, Error error)>;
    using TextCompletion = std::function<void(std::optional<QString> text, Error error)>;
    using Completion = std::function<void(Error error)>;

    TPEngineAPI() = delete;

    static constexpr auto BaseAddress = "http://127.0.0.1:8090";
    static constexpr auto ErrorDomain = "TPEngineAPI";
    static constexpr int TimeoutMs = TPEngineLimits::TimeoutMs;

    // The shared HTTP session, created on first use and kept for the life of the process.
    static TPEngineSession *session();

    // An engine error: domain "TPEngineAPI", code -1, the message as its description.
    static TPError errorMsg(const QString &message);

    // Sends one request to the engine. The query travels raw (never escaped); a URL that
    // is not strictly valid fails with "URL không hợp lệ" and sends nothing.
    static void requestMethod(const QString &method, const QString &path,
                              const std::optional<QString> &query,
                              const std::optional<QByteArray> &body, RequestCompletion completion);

    static void scriptsWithCompletion(ListCompletion completion);
    // The same request, answered with the listing's body as it came (its status is not
    // examined) for a caller that reads it itself: `reader` sees the body while it arrives,
    // off the main thread, before the completion runs. A transport failure gives no body and
    // the error.
    using BodyReader = TPEngineSession::BodyReader;
    using BodyCompletion = std::function<void(const QByteArray &body, const Error &error)>;
    // The "entries" of a listing body read by Qt's JSON reader, or nothing when the body is
    // not a JSON object with an "entries" array.
    static std::optional<QJsonArray> listingEntries(const QByteArray &body);
    // A listing entry's "path", or "" when it has none that is a text.
    static QString entryPath(const QJsonValue &entry);
    static void scriptsBodyWithCompletion(BodyReader reader, BodyCompletion completion);
    static void readScript(const QString &path, TextCompletion completion);
    // The same read, answered with the file's bytes exactly as the engine sent them (an
    // absent body as no bytes), for a caller that keeps them; decode them with scriptText.
    using DataCompletion = std::function<void(std::optional<QByteArray> bytes, Error error)>;
    static void readScriptData(const QString &path, DataCompletion completion);
    // A read file's text: its bytes as UTF-8, a leading byte-order mark kept; nothing when
    // they are not UTF-8, which the described read gives as the empty text.
    static std::optional<QString> scriptText(const QByteArray &bytes);
    // The bytes a save sends for `content`: its UTF-8, or no bytes when it cannot be
    // encoded (the save then empties the file rather than failing).
    static QByteArray scriptData(const QString &content);
    static void saveScript(const QString &path, const QString &content, Completion completion);
    // The same save, of bytes given exactly (a version kept in the history, text or not).
    static void saveScriptData(const QString &path, const QByteArray &bytes, Completion completion);
    static void deleteScript(const QString &path, Completion completion);
    static void createScript(const QString &path, Completion completion);
    static void createFolder(const QString &path, Completion completion);
    static void runFile(const QString &path, Completion completion);
    static void renameScript(const QString &from, const QString &to, Completion completion);
    // Whether a relative path can travel in the engine's URL as it is. A path that cannot
    // (a space, a non-ASCII letter) fails every operation before anything is sent.
    static bool canCarryPath(const QString &path);
    // The settings document as the compact JSON object the engine is sent, or nothing when
    // a value has no JSON form (a non-finite number, a date, bytes, ...).
    static std::optional<QByteArray> settingsBody(const QVariantMap &settings);
    // Fire and forget: nothing is sent when the dictionary cannot be written as JSON.
    static void postSettings(const QVariantMap &settings);

    // The base address requests go to. Only tests change it, to reach their own server.
    static QString baseAddress();
    static void setBaseAddressForTesting(const QString &address);
};
