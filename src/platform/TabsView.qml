import QtQuick
import QtQuick.Controls
import TPCompanion.Platform

// The tab bar at the bottom and one navigation view per tab above it.
Item {
    id: tabsView
    required property TPTabBarController tabs

    // Only the selected tab's screens are shown; the others keep theirs, hidden.
    Item {
        anchors { left: parent.left; right: parent.right; top: parent.top; bottom: tabBar.top }
        Repeater {
            model: tabsView.tabs
            // A tab's screens are built once it has been shown, as a phone's tab bar does;
            // the launch builds only the first.
            delegate: Loader {
                id: tab
                required property int index
                required property TPNavigationStack stack
                required property bool shown
                anchors.fill: parent
                visible: tabsView.tabs.selectedIndex === index
                active: shown
                sourceComponent: NavigationView { stack: tab.stack }
            }
        }
    }

    Rectangle {
        id: tabBar
        anchors { left: parent.left; right: parent.right; bottom: parent.bottom }
        height: Theme.tabBarHeight
        color: Theme.barBackground
        Rectangle {
            anchors { left: parent.left; right: parent.right; top: parent.top }
            height: 0.5
            color: Theme.separator
        }
        // On a wide window the tabs keep a readable width in the middle, as a tablet's do.
        Row {
            id: tabRow
            anchors { top: parent.top; bottom: parent.bottom; horizontalCenter: parent.horizontalCenter }
            width: Math.min(parent.width, Theme.readableWidth)
            Repeater {
                model: tabsView.tabs
                delegate: AbstractButton {
                    id: tabButton
                    required property int index
                    required property string title
                    required property url iconSource
                    objectName: "tab" + index
                    width: tabRow.width / 3
                    height: tabBar.height
                    readonly property bool selected: tabsView.tabs.selectedIndex === index
                    onClicked: tabsView.tabs.selectedIndex = index
                    Accessible.role: Accessible.PageTab
                    Accessible.name: title
                    Accessible.selected: selected
                    background: Item {}
                    contentItem: Column {
                        spacing: 2
                        topPadding: 6
                        TPSvgIcon {
                            anchors.horizontalCenter: parent.horizontalCenter
                            source: tabButton.iconSource
                            width: 26
                            height: 26
                            opacity: tabButton.selected ? 1 : 0.45
                        }
                        Text {
                            anchors.horizontalCenter: parent.horizontalCenter
                            text: tabButton.title
                            font.pixelSize: 10
                            color: tabButton.selected ? Theme.tint : Theme.inactive
                        }
                    }
                }
            }
        }
    }
}
