import QtQuick
import QtQuick.Controls
import TPCompanion

// The keys a phone keyboard hides, in one row that scrolls sideways above the keyboard.
// Each key reports itself; the code editor decides what it does.
Rectangle {
    id: row
    required property var keys
    signal keyPressed(string key)

    implicitHeight: 44
    height: implicitHeight
    color: Theme.barBackground

    Rectangle {
        anchors { left: parent.left; right: parent.right; top: parent.top }
        height: 0.5
        color: Theme.separator
    }

    ListView {
        anchors { fill: parent; margins: 4 }
        orientation: ListView.Horizontal
        spacing: 4
        model: row.keys
        delegate: AbstractButton {
            id: key
            required property var modelData
            objectName: "symbolKey_" + modelData.key
            focusPolicy: Qt.NoFocus
            width: Math.max(36, contentItem.implicitWidth + 16)
            height: 36
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
