#pragma once

#include "platform/tploadingviewcontroller.h"
#include "platform/tptitledrowsmodel.h"

#include <QJsonArray>
#include <QStringList>
#include <QtQml/qqmlregistration.h>

// Where a file or a folder moves to: every folder of the engine's script tree it may move
// into, the root first, read from a fresh listing. Choosing one sends the rename from the
// old path to the same name in that folder; a name the folder already holds is refused
// before anything is sent. The folder it is in now is shown dimmed and does nothing.
class TPFolderPickerVC : public TPLoadingViewController
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the scripts list")
    Q_PROPERTY(TPTitledRowsModel *rows READ rows CONSTANT)

public:
    explicit TPFolderPickerVC(const QString &moving, QObject *parent = nullptr);

    QUrl viewUrl() const override;
    void viewWillAppear() override;

    TPTitledRowsModel *rows() const { return m_rows; }
    // The folders shown, in the rows' order: "" is the root.
    const QStringList &targets() const { return m_targets; }

public slots:
    void didSelectRow(int row);

private:
    void showTargets(const QJsonArray &listing);

    const QString m_moving;
    QJsonArray m_listing;
    QStringList m_targets;
    TPTitledRowsModel *m_rows;
};
