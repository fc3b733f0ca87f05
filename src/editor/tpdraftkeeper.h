#pragma once

#include <QObject>
#include <QString>
#include <QTimer>

#include <functional>

// Keeps one file's unsaved text as a draft (TPDraftStore): written within about a second of
// the last change while there are unsaved changes, and at once when the app leaves the
// foreground or quits. Its owner calls flush() before it goes away, while the text can
// still be read. A draft it wrote is removed once nothing is unsaved any more; saved() and
// discard() remove any draft of the file.
class TPDraftKeeper : public QObject
{
    Q_OBJECT

public:
    static constexpr int WriteDelayMs = 1000;

    using TextSource = std::function<QString()>;
    TPDraftKeeper(const QString &relPath, TextSource text, QObject *parent = nullptr);

    // The text was edited; `unsaved` when it now differs from what the engine has.
    void changed(bool unsaved);
    // The engine has the text, or the user threw the draft away: no draft is kept.
    void saved();
    void discard();
    // Writes a pending draft now.
    void flush();
    bool writePending() const { return m_delay.isActive(); }

public slots:
    // Anything but the foreground may be followed by the app being killed.
    void onApplicationStateChanged(Qt::ApplicationState state);

private:
    void write();

    QString m_relPath;
    TextSource m_text;
    QTimer m_delay;
    bool m_wrote = false;
};
