#pragma once

#include "tpdevenginepaths.h"
#include "tpluarunner.h"

#include <QHttpServer>
#include <QHttpServerRequest>
#include <QHttpServerResponder>
#include <QHttpServerResponse>
#include <QJsonObject>
#include <QObject>

// A stand-in for the phone's script engine: the engine's HTTP protocol over a real folder,
// on 127.0.0.1 only, for running and testing the app on a desktop.
class TPDevEngine : public QObject
{
    Q_OBJECT
public:
    explicit TPDevEngine(const QString &root, QObject *parent = nullptr);
    ~TPDevEngine() override;

    // Listens on 127.0.0.1; returns the port, or 0 when it cannot (port 0 picks a free one).
    quint16 listen(quint16 port);

    // Where the last settings document is kept: a file beside the root.
    QString settingsFilePath() const;
    QJsonObject lastSettings() const { return m_settings; }
    TPLuaRunner *runner() { return &m_runner; }

signals:
    // One line of the engine's log: requests, script output, settings.
    void logLine(const QString &line);

private:
    QHttpServerResponse listScripts();
    QHttpServerResponse readScript(const QHttpServerRequest &request, const QString &name,
                                   const QString &path);
    QHttpServerResponse writeScript(const QHttpServerRequest &request, const QString &name,
                                    const QString &path);
    QHttpServerResponse deleteScript(const QHttpServerRequest &request, const QString &name,
                                     const QString &path);
    QHttpServerResponse makeFolder(const QHttpServerRequest &request, const QString &name,
                                   const QString &path);
    QHttpServerResponse renameEntry(const QHttpServerRequest &request);
    QHttpServerResponse runFile(const QHttpServerRequest &request, const QString &name,
                                const QString &path);
    QHttpServerResponse storeSettings(const QHttpServerRequest &request);

    // Every route is logged: method, path, query, status and time taken.
    template <typename Handler>
    void addRoute(const char *path, QHttpServerRequest::Method method, Handler handler);
    // An operation on the one path named by "name=", already resolved under the root; a
    // path that would leave the root is refused before the handler runs.
    using PathHandler = QHttpServerResponse (TPDevEngine::*)(const QHttpServerRequest &,
                                                             const QString &name,
                                                             const QString &path);
    void addPathRoute(const char *path, QHttpServerRequest::Method method, PathHandler handler);
    void log(const QString &line);
    // Any path or method the engine does not serve: a logged 404.
    void answerMissing(const QHttpServerRequest &request, QHttpServerResponder &responder);

    TPDevEnginePaths m_paths;
    QHttpServer m_server;
    TPLuaRunner m_runner;
    QJsonObject m_settings;
};
