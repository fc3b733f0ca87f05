#pragma once

#include "platform/tpviewcontroller.h"
#include "scripts/tpfilesearch.h"
#include "scripts/tpsearchrowsmodel.h"

#include <QVariantMap>
#include <QtQml/qqmlregistration.h>

class TPScriptTreeIndex;

// The preview of a replace in all files: every file it changes, each with the lines as they
// are and as they will be, and a toggle that leaves the file out. A file open in an editor
// with unsaved typing is left out, and says so. Replace saves each file still in, one after
// the other, through TPKeptEntries::replaceText: what the engine had and what was saved are
// both in the history, and a file that changed on the engine since it was read is left
// alone. Then it says what was done and goes back to the search.
class TPReplacePreviewVC : public TPViewController
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the search")
    Q_PROPERTY(TPSearchRowsModel *rows READ rows CONSTANT)
    Q_PROPERTY(bool applying READ applying NOTIFY stateChanged)
    Q_PROPERTY(bool canApply READ canApply NOTIFY stateChanged)
    Q_PROPERTY(QString status READ status NOTIFY stateChanged)
    Q_PROPERTY(QVariantMap texts READ texts CONSTANT)

public:
    TPReplacePreviewVC(const QList<TPFileReplace> &changes, TPScriptTreeIndex *index,
                       QObject *parent = nullptr);

    QUrl viewUrl() const override;

    TPSearchRowsModel *rows() const { return m_rows; }
    bool applying() const { return m_applying; }
    bool canApply() const;
    QString status() const { return m_status; }
    QVariantMap texts() const { return m_texts; }

    // How a finished replace went, file by file.
    struct Outcome
    {
        int replaced = 0;
        QStringList files;
        QStringList changedMeanwhile;
        QStringList unsaved;
        QStringList failed;
    };

public slots:
    void setIncluded(int row, bool included);
    void onApplyTapped();

signals:
    void stateChanged();
    // Every file has been tried.
    void applied(const TPReplacePreviewVC::Outcome &outcome);

private:
    void applyNext(std::shared_ptr<QList<TPFileReplace>> queue, std::shared_ptr<Outcome> outcome,
                   int total);
    void finish(const Outcome &outcome);

    QList<TPFileReplace> m_changes;
    TPScriptTreeIndex *m_index;
    TPSearchRowsModel *m_rows;
    bool m_applying = false;
    QString m_status;
    QVariantMap m_texts;
};
