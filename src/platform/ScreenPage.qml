import QtQuick

// The root of a screen's view: the page a navigation stack shows, with the buttons it puts
// on the right of the navigation bar, and on its left where no back button is (none by
// default).
Item {
    property Component barItems: null
    property Component leadingBarItems: null
}
