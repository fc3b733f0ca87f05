import QtQuick

// The spinning activity indicator, shown only while running. The style's indicator is made
// only while it runs, rather than with every page that might show one, and from its address,
// off the GUI thread: a page that shows none does not even read it, and the launch, whose
// first listing sets it running, does not wait for it. A wait too short to see shows none.
Item {
    property bool running: false
    visible: running
    implicitWidth: spinner.item ? (spinner.item as Item).implicitWidth : 0
    implicitHeight: spinner.item ? (spinner.item as Item).implicitHeight : 0
    Accessible.role: Accessible.Indicator
    Loader {
        id: spinner
        anchors.fill: parent
        active: parent.running
        asynchronous: true
        source: "ActivitySpinner.qml"
    }
}
