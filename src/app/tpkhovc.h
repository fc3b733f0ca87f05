#pragma once

#include "platform/tpviewcontroller.h"

#include <QtQml/qqmlregistration.h>

// The Store tab: for now it only says that the store is coming.
class TPKhoVC : public TPViewController
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the app delegate")
    Q_PROPERTY(QString label READ label NOTIFY labelChanged)

public:
    explicit TPKhoVC(QObject *parent = nullptr);

    QUrl viewUrl() const override;
    QString label() const { return _label; }

public slots:
    void onLangChangedNotification();

signals:
    void labelChanged();

protected:
    void viewDidLoad() override;

private:
    QString _label;
};
