import QtQuick
import QtQuick.Controls

// The spinning activity indicator, shown only while running. The spinner itself is made when
// it first runs: a screen shows one only while it waits, and most never wait at launch.
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
        sourceComponent: BusyIndicator {
            running: true
        }
    }
}
