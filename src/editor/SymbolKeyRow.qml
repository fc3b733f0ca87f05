import QtQuick
import TPCompanion.Platform

// The keys a phone keyboard hides, in one row that scrolls sideways above the keyboard.
// Each key reports itself; the code editor decides what it does.
Rectangle {
    id: row
    required property var keys
    signal keyPressed(string key)

    implicitHeight: 48
    height: implicitHeight
    color: Theme.barBackground

    Rectangle {
        anchors { left: parent.left; right: parent.right; top: parent.top }
        height: 0.5
        color: Theme.separator
    }

    ListView {
        anchors { fill: parent; topMargin: 2; bottomMargin: 2 }
        orientation: ListView.Horizontal
        model: row.keys
        delegate: FocusKeepingButton {
            id: key
            required property var modelData
            objectName: "symbolKey_" + modelData.key
            // Keys touch each other at 44x44 points; each is drawn 36 high with a gap around it.
            width: Math.max(44, contentItem.implicitWidth + 16)
            height: 44
            topInset: 4
            bottomInset: 4
            leftInset: 2
            rightInset: 2
            text: modelData.label
            Accessible.name: modelData.label
            onClicked: row.keyPressed(modelData.key)
            contentItem: Text {
                text: key.text
                font.pixelSize: 17
                color: Theme.label
                horizontalAlignment: Text.AlignHCenter
                verticalAlignment: Text.AlignVCenter
            }
            background: Rectangle {
                radius: 6
                color: key.pressed ? Theme.highlight : Theme.background
                border.color: Theme.separator
                border.width: 0.5
            }
        }
    }
}
