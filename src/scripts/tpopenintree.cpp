#include "scripts/tpopenintree.h"

#include "editor/tpeditorvc.h"
#include "foundation/tppathrules.h"
#include "platform/tpnavigationstack.h"

TPEditorVC *TPOpenInTree(TPNavigationStack *stack, const QString &path,
                         const TPFolderScreen &folderScreen)
{
    QList<TPViewController *> screens;
    const QStringList folders = TPParentPath(path).split(u'/', Qt::SkipEmptyParts);
    for (qsizetype depth = 1; depth <= folders.size(); ++depth)
        screens.append(folderScreen(folders.first(depth).join(u'/')));
    auto *editor = new TPEditorVC(path);
    screens.append(editor);
    stack->replaceAboveRoot(screens);
    return editor;
}
