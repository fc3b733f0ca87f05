import QtQuick
import QtQuick.Controls
import TPCompanion
import TPCompanion.Platform

// The one window: an empty screen until the tabs are built, the tabs after, and whatever
// alert or sheet is presented over both.
ApplicationWindow {
    id: window
    required property AppDelegate app

    width: 390
    height: 844
    visible: true
    title: "TP Companion"
    color: Theme.background

    Loader {
        objectName: "tabsLoader"
        anchors.fill: parent
        active: window.app.tabBarController !== null
        sourceComponent: TabsView {
            tabs: window.app.tabBarController
        }
    }

    AlertHost {
        presenter: window.app.presenter
    }
}
