#include "foundation/tpatomicfile.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>

bool TPWriteFileAtomically(const QString &path, const QByteArray &content)
{
    // A folder that cannot be made shows up as a failed write below.
    QDir().mkpath(QFileInfo(path).absolutePath());
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    if (file.write(content) != content.size()) {
        file.cancelWriting();
        return false;
    }
    return file.commit();
}
