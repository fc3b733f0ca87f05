#pragma once

#include <QObject>
#include <QSet>
#include <QString>

class TPViewController;

// Runs files from a list screen, each at most once at a time: while a file's run is in flight
// its row's Run button waits, and a run the engine refuses says so on the screen.
class TPFileRunner : public QObject
{
    Q_OBJECT

public:
    // The runner lives as long as `screen`, which shows its alerts.
    explicit TPFileRunner(TPViewController *screen);

    bool isRunning(const QString &path) const { return m_running.contains(path); }
    // Asks the engine to run `path`, unless a run of it is in flight already.
    void run(const QString &path);

signals:
    void runningChanged(const QString &path, bool running);

private:
    void setRunning(const QString &path, bool running);

    TPViewController *m_screen;
    QSet<QString> m_running;
};
