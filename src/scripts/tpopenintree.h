#pragma once

#include <QString>

#include <functional>

class TPEditorVC;
class TPNavigationStack;
class TPViewController;

// Makes the screen of one folder of the tree.
using TPFolderScreen = std::function<TPViewController *(const QString &folder)>;

// Opens `path` in an editor on `stack`, over the screens of the folders it lies in, so that
// Back walks up the tree; everything above the stack's root is replaced. Returns the editor.
TPEditorVC *TPOpenInTree(TPNavigationStack *stack, const QString &path,
                         const TPFolderScreen &folderScreen);
