#include "platform/tploadingviewcontroller.h"

void TPLoadingViewController::setLoading(bool loading)
{
    if (m_loading == loading)
        return;
    m_loading = loading;
    emit loadingChanged();
}
