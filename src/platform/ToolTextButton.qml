import QtQuick
import QtQuick.Controls
import TPCompanion

// A compact text button for a tool strip; `checked` shows a toggle that is on. It never
// takes the keyboard focus, so the text being edited keeps it.
AbstractButton {
    id: button
    focusPolicy: Qt.NoFocus
    implicitWidth: Math.max(40, contentItem.implicitWidth + 20)
    implicitHeight: 34
    Accessible.name: text
    Accessible.role: checkable || checked ? Accessible.CheckBox : Accessible.Button

    contentItem: Text {
        text: button.text
        font.pixelSize: 15
        color: !button.enabled ? Theme.secondaryLabel : button.checked ? Theme.background : Theme.tint
        opacity: button.pressed ? 0.4 : 1
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
    }
    background: Rectangle {
        radius: 7
        color: button.checked ? Theme.tint : "transparent"
    }
}
