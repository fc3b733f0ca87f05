import QtQuick
import QtQuick.Controls
import TPCompanion.Platform

// A navigation bar button: a title or a glyph in the tint colour. A sheet it opens may point
// at it: its tap hands the button itself to the controller.
AbstractButton {
    id: button
    property string glyph: ""
    // Shown beside the glyph (the back button's previous title).
    property string label: ""
    property color color: Theme.tint
    // Some glyphs are drawn small in their font: they ask for more.
    property int glyphSize: 26
    // Draws nothing but keeps its room and its tap, for an indicator laid over it.
    property bool contentHidden: false

    implicitWidth: Math.max(44, contentItem.implicitWidth + 16)
    implicitHeight: 44
    Accessible.name: text

    contentItem: Row {
        spacing: 2
        opacity: button.contentHidden ? 0 : button.pressed ? 0.4 : 1
        Text {
            anchors.verticalCenter: parent.verticalCenter
            text: button.glyph !== "" ? button.glyph : button.text
            font.pixelSize: button.glyph !== "" ? button.glyphSize : 17
            color: button.enabled ? button.color : Theme.secondaryLabel
        }
        Text {
            objectName: "barButtonLabel"
            anchors.verticalCenter: parent.verticalCenter
            visible: button.label !== ""
            text: button.label
            font.pixelSize: 17
            color: button.enabled ? button.color : Theme.secondaryLabel
        }
    }
    background: Item {}
}
