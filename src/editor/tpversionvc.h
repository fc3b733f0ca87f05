#pragma once

#include "editor/tpscripthistory.h"
#include "platform/tptitledrowsmodel.h"
#include "platform/tpviewcontroller.h"

#include <QFont>
#include <QPointer>
#include <QtQml/qqmlregistration.h>

#include <optional>

class TPEditorVC;

// One version from the history, read-only, its lines marked where they differ from the
// editor's text when the file is open. Restore puts it in the editor as one undoable edit,
// unsaved (opening the editor when it is not open); a file the engine no longer lists is
// created again and given the version's bytes, through the create and save requests; a
// version that is not text, which no editor can hold, is saved as it is once the user
// agrees.
class TPVersionVC : public TPViewController
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the history")
    Q_PROPERTY(TPTitledRowsModel *lines READ lines CONSTANT)
    Q_PROPERTY(QString restoreTitle READ restoreTitle CONSTANT)
    Q_PROPERTY(bool loading READ loading NOTIFY loadingChanged)
    // The editor's font, so that a version reads as the script does.
    Q_PROPERTY(QFont font READ font CONSTANT)

public:
    TPVersionVC(const TPScriptVersion &version, TPViewController *editor, bool deleted,
                QObject *parent = nullptr);

    QUrl viewUrl() const override;
    TPTitledRowsModel *lines() const { return m_lines; }
    QString restoreTitle() const;
    bool loading() const { return !m_bytes; }
    QFont font() const;
    const std::optional<QByteArray> &bytes() const { return m_bytes; }

public slots:
    void onRestoreTapped();

signals:
    void loadingChanged();

protected:
    void viewDidLoad() override;

private:
    void showLines();
    void undelete();
    void saveAsItIs();
    // Back to the editor the history was opened from.
    void returnToEditor();

    TPScriptVersion m_version;
    // The editor open on the file, if any.
    QPointer<TPEditorVC> m_editor;
    bool m_deleted;
    std::optional<QByteArray> m_bytes;
    TPTitledRowsModel *m_lines;
};
