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

    // Made when the first alert or sheet comes up, and kept from then on: most launches
    // show none.
    Loader {
        objectName: "alertHostLoader"
        anchors.fill: parent
        active: window.app.presenter.current !== null || item !== null
        Component.onCompleted: setSource(window.app.presenter.hostUrl, { presenter: window.app.presenter })
    }
}
