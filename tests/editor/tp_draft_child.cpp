// A separate app process for the editor's draft tests: it opens an editor on the file named
// by its first argument, types the text given (hex) by its second over it, and quits the
// way the app quits, with the draft's write still pending. It then ends at once, without
// running any destructor, as a process the system ends would: only what quitting itself
// wrote is on disk. Its data folder is the one of the application named by the third
// argument, in test mode.
#include "editor/tpcodeeditor.h"
#include "editor/tpeditorvc.h"

#include <QGuiApplication>
#include <QStandardPaths>
#include <QTimer>

#include <cstdlib>

int main(int argc, char *argv[])
{
    QGuiApplication app(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 4)
        return 2;
    QStandardPaths::setTestModeEnabled(true);
    QCoreApplication::setOrganizationName(QStringLiteral("TPCompanionTests"));
    QCoreApplication::setApplicationName(arguments.at(3));
    auto *editor = new TPEditorVC(arguments.at(1));
    const QString typed = QString::fromUtf8(QByteArray::fromHex(arguments.at(2).toLatin1()));
    editor->code()->buffer()->applyStep({{0, editor->text(), typed}});
    if (!editor->drafts()->writePending())
        return 3;
    QTimer::singleShot(0, &app, &QCoreApplication::quit);
    app.exec();
    std::_Exit(0);
}
