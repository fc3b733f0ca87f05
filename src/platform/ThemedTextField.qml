import QtQuick
import QtQuick.Controls
import TPCompanion.Platform

// A text field in the theme's colours, so that it reads in both appearances. Its accessible
// name is its placeholder unless a view names it otherwise. It answers a finger in 44
// points of height and draws its box 36 points high.
TextField {
    implicitHeight: 44
    topInset: 4
    bottomInset: 4
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
