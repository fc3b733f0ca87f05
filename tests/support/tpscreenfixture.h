#pragma once

#include "editor/tpdraftstore.h"
#include "editor/tpscripthistory.h"
#include "engine/tpengineapi.h"
#include "foundation/tpownerfile.h"
#include "platform/tpalertcontroller.h"
#include "platform/tppresenter.h"
#include "tprecordingengine.h"
#include "tptestutil.h"

#include <QCoreApplication>
#include <QDir>
#include <QSettings>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <memory>

// What a screen test needs around its screen: settings and the app's data folder in test
// mode, the owner file in a temporary folder, a recording engine on loopback and a
// presenter to catch alerts.
class TPScreenFixture
{
public:
    explicit TPScreenFixture(const char *testName)
    {
        QStandardPaths::setTestModeEnabled(true);
        QCoreApplication::setOrganizationName(QStringLiteral("TPCompanionTests"));
        QCoreApplication::setApplicationName(QString::fromLatin1(testName));
    }

    // Call from init(): a clean store, no drafts, no history, a fresh engine and no alerts.
    bool setUp()
    {
        QSettings().clear();
        QDir(TPDraftStore::folder()).removeRecursively();
        TPScriptHistory::shared()->waitForIdle();
        QDir(TPScriptHistory::shared()->folder()).removeRecursively();
        presenter = std::make_unique<TPPresenter>();
        ownerDir = std::make_unique<QTemporaryDir>();
        TPSetOwnerFileLocations({ownerDir->filePath(QStringLiteral("jb")),
                                 ownerDir->filePath(QStringLiteral("AppGroup"))});
        engine = std::make_unique<TPRecordingEngine>();
        if (!engine->startAsTheEngine())
            return false;
        return ownerDir->isValid();
    }

    // The listing the engine answers with, for every "/scripts" request; other requests
    // get 200 with an empty body.
    void serveListing(const QByteArray &json)
    {
        engine->setResponder([json](const TPRecordedRequest &request) {
            return request.path == QLatin1String("/scripts") ? TPScriptedAnswer::ok(json)
                                                             : TPScriptedAnswer::ok();
        });
    }

    QList<TPRecordedRequest> requestsTo(const QString &path) const
    {
        QList<TPRecordedRequest> found;
        for (const TPRecordedRequest &request : engine->requests()) {
            if (request.path == path)
                found.append(request);
        }
        return found;
    }

    TPAlertController *alert() const { return presenter->current(); }
    int alertCount() const { return int(presenter->pending().size()); }
    // "title|message" of the alert on screen, or "" when none is.
    QString alertText() const
    {
        return alert() ? alert()->title() + u'|' + alert()->message() : QString();
    }
    QStringList actionTitles() const
    {
        QStringList titles;
        if (alert()) {
            for (const TPAlertAction *action : alert()->actions())
                titles.append(action->title());
        }
        return titles;
    }

    std::unique_ptr<TPRecordingEngine> engine;
    std::unique_ptr<TPPresenter> presenter;
    std::unique_ptr<QTemporaryDir> ownerDir;
};
