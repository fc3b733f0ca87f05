import QtQuick
import QtQuick.Controls
import TPCompanion
import TPCompanion.Platform

// The store placeholder: one centred line in the secondary colour.
ScreenPage {
    id: page
    required property TPKhoVC controller

    Rectangle {
        anchors.fill: parent
        color: Theme.background
    }
    Label {
        objectName: "storeLabel"
        anchors.centerIn: parent
        horizontalAlignment: Text.AlignHCenter
        text: page.controller ? page.controller.label : ""
        color: Theme.secondaryLabel
        font.pixelSize: Theme.bodySize
    }
}
