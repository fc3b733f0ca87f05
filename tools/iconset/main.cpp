// tp-iconset SVG FOLDER: renders the app icon's vector source into the phone's app icon set
// (PNG files and Contents.json). scripts/make-app-icons.sh runs it.
#include "tpiconset.h"

#include <QGuiApplication>

int main(int argc, char *argv[])
{
    QGuiApplication app(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 3) {
        qWarning("usage: tp-iconset SVG FOLDER");
        return 2;
    }
    QString error;
    if (!TPWriteAppIconSet(arguments.at(1), arguments.at(2), &error)) {
        qWarning("%s", qPrintable(error));
        return 1;
    }
    return 0;
}
