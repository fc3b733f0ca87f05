#include "editor/tpopeneditors.h"

#include <QList>

#include <algorithm>

namespace {

// Editors live on the main thread only.
QList<TPOpenEditor *> &openEditors()
{
    static QList<TPOpenEditor *> editors;
    return editors;
}

} // namespace

namespace TPOpenEditors {

void add(TPOpenEditor *editor)
{
    openEditors().append(editor);
}

void remove(TPOpenEditor *editor)
{
    openEditors().removeAll(editor);
}

bool hasUnsavedEdits(const QString &path)
{
    return std::any_of(openEditors().cbegin(), openEditors().cend(),
                       [&path](const TPOpenEditor *editor) {
                           return editor->openPath() == path && editor->hasUnsavedEdits();
                       });
}

void savedElsewhere(const QString &path, const QString &text)
{
    // A copy: taking the text may close nothing, but the list must not change under the loop.
    const QList<TPOpenEditor *> editors = openEditors();
    for (TPOpenEditor *editor : editors) {
        if (editor->openPath() == path)
            editor->takeSavedText(text);
    }
}

} // namespace TPOpenEditors
