#include "foundation/tpnotificationcenter.h"

TPNotificationCenter *TPNotificationCenter::defaultCenter()
{
    static TPNotificationCenter center;
    return &center;
}

void TPNotificationCenter::postLangChanged()
{
    emit TPLangChanged();
}
