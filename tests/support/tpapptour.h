#pragma once

#include <QObject>
#include <QString>
#include <QTemporaryDir>

#include <functional>
#include <memory>

class AppDelegate;
class QQmlEngine;
class TPAppWindow;
class QQuickWindow;
class TPDevEngine;

// Runs the real app, Main.qml and all, against a development engine serving a copy of the
// sample scripts, and walks it through every screen as a person would, by touching what
// the screens show and typing into their fields. At each stop it
// calls `atScreen` with the stop's name; a false answer ends the tour. Making a tour puts
// Qt's standard paths in test mode, so that the app's settings, drafts and history go to
// the test folders.
class TPAppTour
{
public:
    using Stop = std::function<bool(const QString &name)>;

    TPAppTour();
    ~TPAppTour();

    // Checks the sample folder; false with `error` set when there is none.
    bool prepare(const QString &samplesFolder, QString *error);
    // One full tour in `language` ("vi" or "en"), starting from a first run on a fresh copy
    // of the samples.
    bool run(const QString &language, const Stop &atScreen, QString *error);

    QQuickWindow *window() const { return m_window; }
    AppDelegate *delegate() const { return m_delegate.get(); }

private:
    bool startEngine(const QString &language, QString *error);
    bool walk(const Stop &atScreen, QString *error);
    // A tap on the centre of the visible item named `name`, once it is there and enabled;
    // false when it never is.
    bool tap(const QString &name);
    // A tap on the field named `fieldName`, then `text` (Latin-1) typed key by key.
    bool type(const QString &fieldName, const QString &text);

    QString m_samplesFolder;
    QTemporaryDir m_work;
    int m_runs = 0;
    std::unique_ptr<TPDevEngine> m_engine;
    std::unique_ptr<AppDelegate> m_delegate;
    std::unique_ptr<QQmlEngine> m_qml;
    // Made as the app makes its window; gone before the engine.
    std::unique_ptr<TPAppWindow> m_appWindow;
    QQuickWindow *m_window = nullptr;
};
