import QtQuick
import QtQuick.Controls
import TPCompanion

// A text field in the theme's colours, so that it reads in both appearances. Its accessible
// name is its placeholder unless a view names it otherwise.
TextField {
    color: Theme.label
    placeholderTextColor: Theme.secondaryLabel
    selectionColor: Theme.selection
    selectedTextColor: Theme.label
    Accessible.name: placeholderText
    background: Rectangle {
        color: Theme.fieldBackground
        border.color: Theme.fieldBorder
        border.width: 0.5
        radius: 6
    }
}
