#include "app/tpappwindow.h"

#include "app/appdelegate.h"
#include "platform/tptextfaces.h"
#include "platform/tptheme.h"
#include "scripts/tpscriptslistvc.h"
#include "scripts/tpscripttree.h"

#include <QQmlEngine>

namespace {

QUrl mainUrl()
{
    return QUrl(QStringLiteral("qrc:/qt-project.org/imports/TPCompanion/Main.qml"));
}

QFont sized(int pixelSize, QFont::Weight weight = QFont::Normal)
{
    QFont font;
    font.setPixelSize(pixelSize);
    font.setWeight(weight);
    return font;
}

} // namespace

QList<QFont> TPAppWindow::firstScreenFonts()
{
    const int body = TPTheme::shared()->bodySize();
    return {// A row's name with its mark, first: see TPLoadTextFaces.
            sized(body),
            // The bar's title.
            sized(body, QFont::DemiBold),
            // The tab titles, the bar's glyphs, a folder row's chevron, the search field's ✕
            // and a row's note.
            sized(10), sized(26), sized(24), sized(14), sized(12),
            // The search field's text.
            QFont()};
}

TPAppWindow::TPAppWindow(QQmlEngine &engine, AppDelegate &delegate)
    : m_firstPage(&engine, TPScriptsListVC::pageUrl(), QQmlComponent::Asynchronous),
      m_main(&engine, mainUrl(), QQmlComponent::Asynchronous)
{
    // Both are being read on the loader thread. Meanwhile this thread loads the faces the
    // first screen's texts are drawn with, its rows' marks among them.
    TPLoadTextFaces(firstScreenFonts(),
                    TPScriptTree::kFolderMark.toString() + TPScriptTree::kFileMark.toString());
    // Finished now: waits for whatever of it the loader thread has not read yet.
    m_main.loadUrl(mainUrl(), QQmlComponent::PreferSynchronous);
    QObject *made = m_main.createWithInitialProperties(
        {{QStringLiteral("app"), QVariant::fromValue(&delegate)}});
    m_window.reset(qobject_cast<QQuickWindow *>(made));
    if (made && !m_window)
        delete made;
}
