#include "platform/tppulltorefresh.h"

void TPPullToRefresh::dragMoved(qreal overshoot)
{
    if (overshoot < -PullDistance)
        m_pulledFarEnough = true;
}

void TPPullToRefresh::dragEnded()
{
    if (!m_pulledFarEnough)
        return;
    m_pulledFarEnough = false;
    emit refreshRequested();
}
