#include "app/tpkhovc.h"

#include "foundation/tplang.h"
#include "foundation/tpnotificationcenter.h"

TPKhoVC::TPKhoVC(QObject *parent) : TPViewController(parent) {}

QUrl TPKhoVC::viewUrl() const
{
    return QUrl(QStringLiteral("qrc:/qt-project.org/imports/TPCompanion/StorePage.qml"));
}

void TPKhoVC::viewDidLoad()
{
    onLangChangedNotification();
    connect(TPNotificationCenter::defaultCenter(), &TPNotificationCenter::TPLangChanged, this,
            &TPKhoVC::onLangChangedNotification);
}

void TPKhoVC::onLangChangedNotification()
{
    setTitle(TPL(QStringLiteral("tab_store")));
    _label = TPL(QStringLiteral("store_coming"));
    emit labelChanged();
}
