#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <algorithm>

// The longest the main thread is held up while it runs, seen by a timer due every
// millisecond. For benchmarks.
class TPStallSampler
{
public:
    TPStallSampler()
    {
        m_ticker.setInterval(1);
        QObject::connect(&m_ticker, &QTimer::timeout, [this] {
            m_longestMs = std::max(m_longestMs, m_sinceTick.nsecsElapsed() / 1e6);
            m_sinceTick.restart();
        });
    }
    void start()
    {
        m_sinceTick.start();
        m_ticker.start();
    }
    void stop() { m_ticker.stop(); }
    double longestMs() const { return m_longestMs; }

private:
    QTimer m_ticker;
    QElapsedTimer m_sinceTick;
    double m_longestMs = 0;
};
