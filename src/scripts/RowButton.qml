import QtQuick
import QtQuick.Controls
import TPCompanion.Platform
import TPCompanion.Scripts

// One of a list row's buttons, drawn from one entry of the row's `buttons` (a rowButton: a
// title, a colour of the theme, an action, and perhaps a spoken name). A screenful of rows
// is built in the turn that shows them, so a row button is a single text with no layout of
// its own. Without an entry it is hidden and takes no room.
AbstractButton {
    id: button
    required property int rowIndex
    property var entry: undefined

    visible: entry !== undefined
    objectName: entry !== undefined ? "rowButton_" + (entry.action === TPRowButtonKind.Run ? "run" : "more") + "_" + rowIndex : ""
    text: entry !== undefined ? entry.title : ""
    enabled: entry !== undefined && entry.enabled
    // Whole pixels, so that the buttons beside it stay on the pixel grid too.
    implicitWidth: visible ? Math.max(44, Math.ceil(implicitContentWidth) + 16) : 0
    implicitHeight: 44
    Accessible.name: entry !== undefined && entry.accessibleName !== "" ? entry.accessibleName : text

    // Drawn where a bar button draws its title: at the start of its width.
    contentItem: Text {
        text: button.text
        font.pixelSize: 17
        verticalAlignment: Text.AlignVCenter
        opacity: button.pressed ? 0.4 : 1
        color: !button.enabled || button.entry === undefined ? Theme.secondaryLabel
               : button.entry.colour === TPRowButtonKind.Tint ? Theme.tint : Theme.secondaryLabel
    }
    background: Item {}
}
