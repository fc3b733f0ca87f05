#include "tpdevengine.h"

#include "foundation/tpatomicfile.h"

#include <QTcpServer>

#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QHttpServerRequest>
#include <QHttpServerResponse>
#include <QJsonArray>
#include <QJsonDocument>
#include <QMetaEnum>
#include <QUrlQuery>

namespace {

using Status = QHttpServerResponse::StatusCode;
using Method = QHttpServerRequest::Method;

QHttpServerResponse text(Status status, const QString &message)
{
    return QHttpServerResponse(QByteArrayLiteral("text/plain; charset=utf-8"),
                               message.toUtf8() + '\n', status);
}

QHttpServerResponse ok()
{
    return text(Status::Ok, QStringLiteral("ok"));
}

QHttpServerResponse refusedPath(const QString &relative)
{
    return text(Status::BadRequest, QStringLiteral("path not allowed: %1").arg(relative));
}

QHttpServerResponse missing(const QString &relative)
{
    return text(Status::NotFound, QStringLiteral("not found: %1").arg(relative));
}

QHttpServerResponse exists(const QString &relative)
{
    return text(Status::Conflict, QStringLiteral("already exists: %1").arg(relative));
}

QString queryValue(const QHttpServerRequest &request, const char *key)
{
    return request.query().queryItemValue(QString::fromLatin1(key), QUrl::FullyDecoded);
}

// "METHOD /path query", the start of every request's log line.
QString requestLine(const QHttpServerRequest &request)
{
    const char *method = QMetaEnum::fromType<Method>().valueToKey(int(request.method()));
    return QStringLiteral("%1 %2 %3")
        .arg(QString::fromLatin1(method ? method : "?").toUpper(), request.url().path(),
             request.url().query(QUrl::FullyEncoded));
}

bool isInsideFolder(const QString &path, const QString &folder)
{
    return path.startsWith(folder + u'/');
}

bool entryExists(const QString &path)
{
    const QFileInfo info(path);
    return info.exists() || info.isSymLink();
}

} // namespace

TPDevEngine::TPDevEngine(const QString &root, QObject *parent) : QObject(parent), m_paths(root)
{
    using Request = const QHttpServerRequest &;
    addRoute("/scripts", Method::Get, [this](Request) { return listScripts(); });
    addPathRoute("/script", Method::Get, &TPDevEngine::readScript);
    addPathRoute("/script", Method::Post, &TPDevEngine::writeScript);
    addPathRoute("/script", Method::Delete, &TPDevEngine::deleteScript);
    addPathRoute("/mkdir", Method::Post, &TPDevEngine::makeFolder);
    addRoute("/rename", Method::Post, [this](Request r) { return renameEntry(r); });
    addPathRoute("/runfile", Method::Get, &TPDevEngine::runFile);
    addRoute("/settings", Method::Post, [this](Request r) { return storeSettings(r); });
    // The missing handler's form changed when QHttpServer left technology preview (6.8).
#if QT_VERSION >= QT_VERSION_CHECK(6, 8, 0)
    m_server.setMissingHandler(this, [this](Request request, QHttpServerResponder &responder) {
        answerMissing(request, responder);
    });
#else
    m_server.setMissingHandler([this](Request request, QHttpServerResponder &&responder) {
        answerMissing(request, responder);
    });
#endif

    const auto logRun = [this](const QString &name, const QString &line) {
        log(QStringLiteral("[%1] %2").arg(name, line));
    };
    connect(&m_runner, &TPLuaRunner::output, this, logRun);
    connect(&m_runner, &TPLuaRunner::finished, this, logRun);
}

TPDevEngine::~TPDevEngine()
{
    // Running scripts end with the engine.
    m_runner.stopAll();
}

quint16 TPDevEngine::listen(quint16 port)
{
    // A TCP server of our own, bound to the HTTP server: the one way both Qt 6.4 and 6.8 offer.
    auto *tcp = new QTcpServer(&m_server);
    if (!tcp->listen(QHostAddress::LocalHost, port)) {
        delete tcp;
        return 0;
    }
    m_server.bind(tcp);
    return tcp->serverPort();
}

void TPDevEngine::answerMissing(const QHttpServerRequest &request, QHttpServerResponder &responder)
{
    log(requestLine(request) + QStringLiteral(" -> 404"));
    responder.write(QByteArrayLiteral("no such operation\n"), QByteArrayLiteral("text/plain"),
                    QHttpServerResponder::StatusCode::NotFound);
}

QString TPDevEngine::settingsFilePath() const
{
    return m_paths.root() + QStringLiteral(".settings.json");
}

void TPDevEngine::log(const QString &line)
{
    emit logLine(line);
}

template <typename Handler>
void TPDevEngine::addRoute(const char *path, QHttpServerRequest::Method method, Handler handler)
{
    m_server.route(QString::fromLatin1(path), method,
                   [this, handler](const QHttpServerRequest &request) {
                       QElapsedTimer clock;
                       clock.start();
                       QHttpServerResponse response = handler(request);
                       log(QStringLiteral("%1 -> %2 (%3 ms)")
                               .arg(requestLine(request))
                               .arg(int(response.statusCode()))
                               .arg(double(clock.nsecsElapsed()) / 1e6, 0, 'f', 2));
                       return response;
                   });
}

void TPDevEngine::addPathRoute(const char *path, QHttpServerRequest::Method method,
                               PathHandler handler)
{
    addRoute(path, method, [this, handler](const QHttpServerRequest &request) {
        const QString name = queryValue(request, "name");
        const auto resolved = m_paths.resolve(name);
        if (!resolved)
            return refusedPath(name);
        return (this->*handler)(request, name, *resolved);
    });
}

QHttpServerResponse TPDevEngine::listScripts()
{
    QList<QPair<QString, bool>> found;
    QDirIterator it(m_paths.root(),
                    QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot | QDir::NoSymLinks,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        it.next();
        found.append({m_paths.relativePath(it.filePath()), it.fileInfo().isDir()});
    }
    std::sort(found.begin(), found.end());
    QJsonArray entries;
    for (const auto &[path, isDir] : std::as_const(found))
        entries.append(QJsonObject{{QStringLiteral("path"), path}, {QStringLiteral("dir"), isDir}});
    return QHttpServerResponse(QJsonObject{{QStringLiteral("entries"), entries}});
}

QHttpServerResponse TPDevEngine::readScript(const QHttpServerRequest &, const QString &name,
                                            const QString &path)
{
    QFile file(path);
    if (QFileInfo(file.fileName()).isDir() || !file.open(QIODevice::ReadOnly))
        return missing(name);
    return QHttpServerResponse(QByteArrayLiteral("text/plain; charset=utf-8"), file.readAll());
}

QHttpServerResponse TPDevEngine::writeScript(const QHttpServerRequest &request, const QString &name,
                                             const QString &path)
{
    if (QFileInfo(path).isDir())
        return text(Status::Conflict, QStringLiteral("is a folder: %1").arg(name));
    if (!TPWriteFileAtomically(path, request.body()))
        return text(Status::InternalServerError, QStringLiteral("cannot write: %1").arg(name));
    return ok();
}

QHttpServerResponse TPDevEngine::deleteScript(const QHttpServerRequest &, const QString &name,
                                              const QString &path)
{
    const QFileInfo info(path);
    if (!entryExists(path))
        return missing(name);
    // A folder goes with everything in it, as a file manager deletes one; a link inside it
    // is removed, never followed.
    if (info.isDir() && !info.isSymLink()) {
        if (!QDir(path).removeRecursively())
            return text(Status::InternalServerError, QStringLiteral("cannot delete: %1").arg(name));
        return ok();
    }
    if (!QFile::remove(path))
        return text(Status::InternalServerError, QStringLiteral("cannot delete: %1").arg(name));
    return ok();
}

QHttpServerResponse TPDevEngine::makeFolder(const QHttpServerRequest &, const QString &name,
                                            const QString &path)
{
    if (entryExists(path))
        return exists(name);
    if (!QDir().mkpath(path))
        return text(Status::InternalServerError, QStringLiteral("cannot create: %1").arg(name));
    return ok();
}

QHttpServerResponse TPDevEngine::renameEntry(const QHttpServerRequest &request)
{
    const QString from = queryValue(request, "from");
    const QString to = queryValue(request, "to");
    const auto resolvedFrom = m_paths.resolve(from);
    if (!resolvedFrom)
        return refusedPath(from);
    const auto resolvedTo = m_paths.resolve(to);
    if (!resolvedTo)
        return refusedPath(to);
    const QString source = *resolvedFrom;
    const QString target = *resolvedTo;
    if (!entryExists(source))
        return missing(from);
    if (entryExists(target))
        return exists(to);
    if (isInsideFolder(target, source))
        return text(Status::BadRequest, QStringLiteral("cannot move a folder into itself"));
    QDir().mkpath(QFileInfo(target).absolutePath());
    if (!QDir().rename(source, target))
        return text(Status::InternalServerError, QStringLiteral("cannot rename: %1").arg(from));
    return ok();
}

QHttpServerResponse TPDevEngine::runFile(const QHttpServerRequest &, const QString &name,
                                         const QString &path)
{
    QFile file(path);
    if (QFileInfo(file.fileName()).isDir() || !file.open(QIODevice::ReadOnly))
        return missing(name);
    const QByteArray source = file.readAll();
    if (const auto error = TPLuaRunner::compileError(source, name))
        return text(Status::InternalServerError, *error);
    m_runner.start(name, source);
    return ok();
}

QHttpServerResponse TPDevEngine::storeSettings(const QHttpServerRequest &request)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(request.body(), &error);
    if (!document.isObject())
        return text(Status::BadRequest, QStringLiteral("settings must be a JSON object"));
    m_settings = document.object();
    TPWriteFileAtomically(settingsFilePath(),
                          QJsonDocument(m_settings).toJson(QJsonDocument::Indented));
    log(QStringLiteral("settings: %1")
            .arg(QString::fromUtf8(QJsonDocument(m_settings).toJson(QJsonDocument::Compact))));
    return ok();
}
