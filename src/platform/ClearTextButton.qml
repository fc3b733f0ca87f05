import QtQuick
import QtQuick.Controls
import TPCompanion.Platform

// The ✕ at the right end of a text field that empties it, shown while it holds text. The
// field keeps the focus.
FocusKeepingButton {
    required property TextField field
    anchors { right: parent.right; verticalCenter: parent.verticalCenter }
    width: 44
    height: 44
    visible: field.text !== ""
    Accessible.role: Accessible.Button
    contentItem: Text {
        text: "✕"
        color: Theme.secondaryLabel
        font.pixelSize: 14
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
    }
}
