#pragma once

#include "platform/tpviewcontroller.h"

#include <QPointer>
#include <QString>

#include <functional>

// The editor a file's history was opened from, as the history and its versions see it: they
// compare the versions with its text and restore into it, and need not know the editor's
// class (the editor opens the history, so the history must not include the editor).
class TPVersionTarget
{
public:
    virtual ~TPVersionTarget() = default;
    // The editor's screen: it is still open while this is alive, and a restore returns to it.
    virtual TPViewController *targetScreen() = 0;
    virtual QString text() const = 0;
    // Puts `text` in the editor as one undoable edit, unsaved.
    virtual void restoreText(const QString &text) = 0;
    // Reads the file again: the engine has new bytes for it, saved from its history.
    virtual void loadContent() = 0;
};

// Opens an editor on `path` that puts `text` in as a restore once the file is read: how a
// version restores a file no editor is open on. The app hands the history the editor's own.
using TPEditorOpener = std::function<TPViewController *(const QString &path, const QString &text)>;

// A target held weakly: nothing once its screen has closed.
class TPVersionTargetRef
{
public:
    TPVersionTargetRef(TPVersionTarget *target = nullptr)
        : m_target(target), m_screen(target ? target->targetScreen() : nullptr)
    {}
    TPVersionTarget *get() const { return m_screen ? m_target : nullptr; }
    TPVersionTarget *operator->() const { return get(); }
    explicit operator bool() const { return get() != nullptr; }

private:
    TPVersionTarget *m_target;
    QPointer<TPViewController> m_screen;
};
