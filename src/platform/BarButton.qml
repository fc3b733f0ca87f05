import QtQuick
import QtQuick.Controls

// A navigation bar button: a title or a glyph in the tint colour. With an anchorName, a
// sheet that a controller anchors to that name appears next to it.
AbstractButton {
    id: button
    property string anchorName: ""
    property string glyph: ""

    implicitWidth: Math.max(44, label.implicitWidth + 16)
    implicitHeight: 44
    Accessible.name: text

    contentItem: Text {
        id: label
        text: button.glyph !== "" ? button.glyph : button.text
        font.pixelSize: button.glyph !== "" ? 26 : 17
        color: button.enabled ? Theme.tint : Theme.secondaryLabel
        opacity: button.pressed ? 0.4 : 1
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
    }
    background: Item {}

    Component.onCompleted: if (anchorName !== "") SheetAnchors.register(anchorName, button)
    Component.onDestruction: if (anchorName !== "") SheetAnchors.unregister(anchorName, button)
}
