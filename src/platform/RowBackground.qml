import QtQuick
import TPCompanion.Platform

// A list row's background: the page's colour, highlighted while the row is pressed, with the
// separator along its bottom from where the row's text starts.
Rectangle {
    property bool pressed: false
    // Where the separator starts and how far before the right edge it ends.
    property real separatorStart: 16
    property real separatorEndInset: 0

    color: pressed ? Theme.highlight : Theme.background
    Rectangle {
        anchors { left: parent.left; leftMargin: parent.separatorStart; right: parent.right
                  rightMargin: parent.separatorEndInset; bottom: parent.bottom }
        height: 0.5
        color: Theme.separator
    }
}
