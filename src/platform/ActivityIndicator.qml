import QtQuick
import QtQuick.Controls

// The spinning activity indicator, shown only while running. The style's indicator is made
// only while it runs, rather than with every page that might show one.
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
