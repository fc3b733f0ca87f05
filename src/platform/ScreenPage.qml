import QtQuick
import TPCompanion.Platform

// The root of a screen's view: the page a navigation stack shows, with the buttons it puts
// on the right of the navigation bar, and on its left where no back button is (none by
// default).
Item {
    property Component barItems: null
    property Component leadingBarItems: null
    // On a wide window a page's rows keep a readable width in the middle: the room left on
    // either side.
    readonly property real sideInset: Math.max(0, (width - Theme.readableWidth) / 2)
}
