#pragma once

#include <QByteArray>
#include <QHash>
#include <QObject>
#include <QString>

#include <memory>
#include <optional>

// Runs Lua 5.4 scripts, each in a fresh state on a thread of its own, so that a script that
// never ends blocks nothing else. A run stops when the same script is run again, when it is
// stopped, or when the runner is destroyed.
class TPLuaRunner : public QObject
{
    Q_OBJECT
public:
    // One script's run; opaque outside the runner's own file.
    struct Run;

    explicit TPLuaRunner(QObject *parent = nullptr);
    ~TPLuaRunner() override;

    // The compiler's message when `source` does not compile, otherwise none.
    static std::optional<QString> compileError(const QByteArray &source, const QString &name);

    // Starts `source` as the script `name`, stopping an earlier run of the same name first.
    void start(const QString &name, const QByteArray &source);
    // Stops the run of `name`, if any, and waits for it to end.
    void stop(const QString &name);
    void stopAll();
    // How many runs have not ended yet.
    int activeRuns() const;

signals:
    // A line the script printed, or the way it ended; emitted on the runner's thread.
    void output(const QString &name, const QString &line);
    void finished(const QString &name, const QString &outcome);

private:
    QHash<QString, std::shared_ptr<Run>> m_runs;
};
