#include "scripts/tpfilerunner.h"

#include "engine/tpengineapi.h"
#include "foundation/tplang.h"
#include "foundation/tpwhilealive.h"
#include "platform/tpviewcontroller.h"

TPFileRunner::TPFileRunner(TPViewController *screen) : QObject(screen), m_screen(screen) {}

void TPFileRunner::run(const QString &path)
{
    if (isRunning(path))
        return;
    setRunning(path, true);
    TPEngineAPI::runFile(
        path, TPWhileAlive(this, [path](TPFileRunner *self, const TPEngineAPI::Error &error) {
            self->setRunning(path, false);
            if (error)
                self->m_screen->showAlert(TPL("alert_error"), TPL("err_run_fail"));
        }));
}

void TPFileRunner::setRunning(const QString &path, bool running)
{
    if (running)
        m_running.insert(path);
    else
        m_running.remove(path);
    emit runningChanged(path, running);
}
