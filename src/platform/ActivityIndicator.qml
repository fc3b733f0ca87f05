import QtQuick

// The spinning activity indicator, shown only while running. The spinner itself is made when
// it first runs, and off the main thread's path: a wait of a few milliseconds, as the list's
// first load at launch, ends before one is needed.
Item {
    property bool running: false
    visible: running
    implicitWidth: spinner.item ? (spinner.item as Item).implicitWidth : 0
    implicitHeight: spinner.item ? (spinner.item as Item).implicitHeight : 0
    Accessible.role: Accessible.Indicator
    Loader {
        id: spinner
        anchors.fill: parent
        asynchronous: true
        source: parent.running ? Qt.resolvedUrl("Spinner.qml") : ""
    }
}
