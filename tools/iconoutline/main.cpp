// tp-iconoutline DRAWN OUTLINE: writes the filled outline of the drawn SVG icon DRAWN to
// OUTLINE. scripts/make-outline-icons.sh runs it for every icon the modules ship.
#include "tpiconoutline.h"

#include <QFileInfo>
#include <QGuiApplication>
#include <QSaveFile>

int main(int argc, char *argv[])
{
    QGuiApplication app(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 3) {
        qWarning("usage: tp-iconoutline DRAWN OUTLINE");
        return 2;
    }
    QString error;
    const std::optional<QByteArray> outline = TPOutlineIcon(
        arguments.at(1), QStringLiteral("drawn/") + QFileInfo(arguments.at(1)).fileName(), &error);
    if (!outline) {
        qWarning("%s", qPrintable(error));
        return 1;
    }
    QSaveFile file(arguments.at(2));
    if (!file.open(QIODevice::WriteOnly) || file.write(*outline) != outline->size() ||
        !file.commit()) {
        qWarning("cannot write %s", qPrintable(arguments.at(2)));
        return 1;
    }
    return 0;
}
