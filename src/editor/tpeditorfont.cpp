#include "editor/tpeditorfont.h"

#include "editor/tptextsize.h"

#include <QFontDatabase>

namespace TPEditorFont {

QFont base()
{
    QFont font = QFontDatabase::families().contains(QStringLiteral("Menlo"))
                     ? QFont(QStringLiteral("Menlo"))
                     : QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPointSizeF(14);
    // Code needs no cosmetic shaping (ligatures, kerning); skipping it makes laying out a
    // long file about a quarter faster. Scripts that need shaping still get it.
    font.setStyleStrategy(QFont::PreferNoShaping);
    return font;
}

QFont chosen()
{
    QFont font = base();
    font.setPointSizeF(TPTextSize::Points.at(size_t(TPTextSize::storedStep())));
    return font;
}

} // namespace TPEditorFont
