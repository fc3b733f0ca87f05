#include "editor/tpdraftkeeper.h"

#include "editor/tpdraftstore.h"

#include <QCoreApplication>
#include <QGuiApplication>

TPDraftKeeper::TPDraftKeeper(const QString &relPath, TextSource text, QObject *parent)
    : QObject(parent), m_relPath(relPath), m_text(std::move(text))
{
    m_delay.setSingleShot(true);
    m_delay.setInterval(WriteDelayMs);
    connect(&m_delay, &QTimer::timeout, this, &TPDraftKeeper::write);
    if (auto *app = qobject_cast<QGuiApplication *>(QCoreApplication::instance()))
        connect(app, &QGuiApplication::applicationStateChanged, this,
                &TPDraftKeeper::onApplicationStateChanged);
    if (QCoreApplication *app = QCoreApplication::instance())
        connect(app, &QCoreApplication::aboutToQuit, this, &TPDraftKeeper::flush);
}

void TPDraftKeeper::changed(bool unsaved)
{
    if (unsaved) {
        m_delay.start();
        return;
    }
    m_delay.stop();
    if (m_wrote)
        discard();
}

void TPDraftKeeper::saved()
{
    discard();
}

void TPDraftKeeper::discard()
{
    m_delay.stop();
    TPDraftStore::remove(m_relPath);
    m_wrote = false;
}

void TPDraftKeeper::flush()
{
    if (m_delay.isActive()) {
        m_delay.stop();
        write();
    }
}

void TPDraftKeeper::onApplicationStateChanged(Qt::ApplicationState state)
{
    if (state != Qt::ApplicationActive)
        flush();
}

void TPDraftKeeper::write()
{
    m_wrote = TPDraftStore::write(m_relPath, m_text().toUtf8()) || m_wrote;
}
