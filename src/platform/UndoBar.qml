import QtQuick
import TPCompanion.Platform

// What was just done, with the button that undoes it, at the bottom of a screen while its
// controller offers it.
Rectangle {
    id: bar
    required property TPUndoBar model
    visible: model !== null && model.shown
    height: 52
    radius: 12
    color: Theme.label
    Accessible.role: Accessible.AlertMessage
    Accessible.name: model ? model.text : ""

    Text {
        objectName: "undoBarText"
        anchors { left: parent.left; leftMargin: 16; right: undoButton.left; rightMargin: 8; verticalCenter: parent.verticalCenter }
        text: bar.model ? bar.model.text : ""
        elide: Text.ElideMiddle
        font.pixelSize: 15
        color: Theme.background
    }
    FocusKeepingButton {
        id: undoButton
        objectName: "undoBarButton"
        anchors { right: parent.right; rightMargin: 4; verticalCenter: parent.verticalCenter }
        implicitWidth: Math.max(44, contentItem.implicitWidth + 24)
        implicitHeight: 44
        Accessible.role: Accessible.Button
        Accessible.name: bar.model ? bar.model.actionTitle : ""
        onClicked: bar.model.trigger()
        contentItem: Text {
            text: bar.model ? bar.model.actionTitle : ""
            font.pixelSize: 15
            font.weight: Font.DemiBold
            color: Theme.tint
            opacity: undoButton.pressed ? 0.4 : 1
            horizontalAlignment: Text.AlignHCenter
            verticalAlignment: Text.AlignVCenter
        }
        background: Item {}
    }
}
