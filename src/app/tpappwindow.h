#pragma once

#include <QFont>
#include <QList>
#include <QQmlComponent>
#include <QQuickWindow>

#include <memory>

class AppDelegate;
class QQmlEngine;

// The app's one window, made from Main.qml for a delegate. The first screen's page and the
// window's views are read and compiled on the QML loader thread, the page first, while this
// thread loads the faces their texts are drawn with (see TPLoadTextFaces); then this thread
// makes the window. The tabs find the page read when they ask for it, and the first texts
// find their faces: the two threads overlap and the first frame comes sooner.
class TPAppWindow
{
public:
    // The engine must outlive this object.
    TPAppWindow(QQmlEngine &engine, AppDelegate &delegate);

    // Null when Main.qml could not be made; `errorString()` says why.
    QQuickWindow *window() const { return m_window.get(); }
    QString errorString() const { return m_main.errorString(); }
    // The fonts the first screen's texts are drawn with, loaded while its views are read.
    static QList<QFont> firstScreenFonts();
    // Whether the first screen's page has been read, for the tabs to make at once.
    bool firstPageRead() const { return m_firstPage.isReady(); }

private:
    // Kept while the page is read: the loader thread finishes it for the tabs. Declared
    // first, so that it is asked for first.
    QQmlComponent m_firstPage;
    QQmlComponent m_main;
    std::unique_ptr<QQuickWindow> m_window;
};
