#include "platform/tptextfaces.h"

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QTextLayout>

void TPLoadTextFaces(const QList<QFont> &fonts, const QString &sample)
{
    // Reads the system's font configuration: a few milliseconds, once per process.
    QFontDatabase::families();
    for (const QFont &font : fonts) {
        // A text's first layout asks for its line height, which loads the font's engine.
        QFontMetricsF(font).height();
    }
    if (fonts.isEmpty())
        return;
    QTextLayout layout(sample, fonts.constFirst());
    layout.beginLayout();
    layout.createLine();
    layout.endLayout();
}
