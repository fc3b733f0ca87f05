import QtQuick
import TPCompanion.Platform

// A compact text button for a tool strip; `checked` shows a toggle that is on. It never
// takes the keyboard focus, so the text being edited keeps it.
FocusKeepingButton {
    id: button
    // A finger's 44x44 points at least; the toggle's fill is drawn 34 high inside them.
    implicitWidth: Math.max(44, contentItem.implicitWidth + 20)
    implicitHeight: 44
    topInset: 5
    bottomInset: 5
    // Two toggles side by side stay two shapes.
    leftInset: 2
    rightInset: 2
    // Larger for a glyph that stands for a word (the undo arrow).
    property int textSize: 15
    Accessible.name: text
    Accessible.role: checkable || checked ? Accessible.CheckBox : Accessible.Button

    contentItem: Text {
        text: button.text
        font.pixelSize: button.textSize
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
