#pragma once

#include <QQmlComponent>
#include <QQuickWindow>

#include <memory>

class AppDelegate;
class QQmlEngine;

// The app's one window, made from Main.qml for a delegate. The window's views are read
// first; then the first screen's page is read and compiled on the QML loader thread while
// this thread builds the window, instead of afterwards, when the tabs ask for it. The two
// overlap and the first frame comes sooner.
class TPAppWindow
{
public:
    // The engine must outlive this object.
    TPAppWindow(QQmlEngine &engine, AppDelegate &delegate);

    // Null when Main.qml could not be made; `errorString()` says why.
    QQuickWindow *window() const { return m_window.get(); }
    QString errorString() const { return m_main.errorString(); }
    // Whether the first screen's page has been read, for the tabs to make at once.
    bool firstPageRead() const { return m_firstPage.isReady(); }

private:
    QQmlComponent m_main;
    // Kept while the page is read: the loader thread finishes it for the tabs.
    QQmlComponent m_firstPage;
    std::unique_ptr<QQuickWindow> m_window;
};
