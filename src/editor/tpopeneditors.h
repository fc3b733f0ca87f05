#pragma once

#include <QString>

// An editor open on a script, as the operations that change a script from elsewhere (the
// replace in all files) see it.
class TPOpenEditor
{
public:
    virtual ~TPOpenEditor() = default;
    virtual QString openPath() const = 0;
    // Typing that is not saved, which a change from elsewhere must not overwrite.
    virtual bool hasUnsavedEdits() const = 0;
    // The engine now has `text` for this script, saved from elsewhere: the editor shows it as
    // saved, one undo away from what it showed.
    virtual void takeSavedText(const QString &text) = 0;
};

// The editors open now, each added while it lives.
namespace TPOpenEditors {

void add(TPOpenEditor *editor);
void remove(TPOpenEditor *editor);
// Some editor open on `path` has typing that is not saved.
bool hasUnsavedEdits(const QString &path);
// Every editor open on `path` takes the text saved from elsewhere.
void savedElsewhere(const QString &path, const QString &text);

} // namespace TPOpenEditors
