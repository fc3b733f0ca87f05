#pragma once

#include <QFont>

// The font scripts are shown in, by the editor and by the versions of its history.
namespace TPEditorFont {

// "Menlo" at 14 points where installed, otherwise the platform's fixed-width font.
QFont base();
// The same at the text size the user chose last (a version of the script reads as the script
// does).
QFont chosen();

} // namespace TPEditorFont
