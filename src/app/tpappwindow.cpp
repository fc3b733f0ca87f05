#include "app/tpappwindow.h"

#include "app/appdelegate.h"
#include "scripts/tpscriptslistvc.h"

#include <QQmlEngine>

TPAppWindow::TPAppWindow(QQmlEngine &engine, AppDelegate &delegate)
    : m_main(&engine, QUrl(QStringLiteral("qrc:/qt-project.org/imports/TPCompanion/Main.qml"))),
      m_firstPage(&engine, TPScriptsListVC::pageUrl(), QQmlComponent::Asynchronous)
{
    QObject *made = m_main.createWithInitialProperties(
        {{QStringLiteral("app"), QVariant::fromValue(&delegate)}});
    m_window.reset(qobject_cast<QQuickWindow *>(made));
    if (made && !m_window)
        delete made;
}
