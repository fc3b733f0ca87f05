#pragma once

#include "platform/tpviewcontroller.h"

#include <QtQml/qqmlregistration.h>

// A screen that reads what it shows from the engine or the disk: while it reads, its view
// shows that it is loading.
class TPLoadingViewController : public TPViewController
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Screens are made by the app")
    Q_PROPERTY(bool loading READ loading NOTIFY loadingChanged)

public:
    using TPViewController::TPViewController;

    bool loading() const { return m_loading; }

signals:
    void loadingChanged();

protected:
    void setLoading(bool loading);

private:
    bool m_loading = false;
};
