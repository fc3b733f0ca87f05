import QtQuick
import QtQuick.Controls
import TPCompanion

// One folder's rows. Folders carry a chevron; only file rows swipe to reveal Delete.
// Pulling the list down refreshes it.
Item {
    id: page
    required property TPScriptsListVC controller

    property Component barItems: Row {
        BarButton {
            objectName: "refreshButton"
            glyph: "↻"
            text: qsTr("Refresh")
            onClicked: page.controller.onRefreshTapped()
        }
        BarButton {
            objectName: "addButton"
            anchorName: "add"
            glyph: "+"
            text: qsTr("Add")
            onClicked: page.controller.onAddTapped()
        }
    }

    Rectangle {
        anchors.fill: parent
        color: Theme.background
    }

    BusyIndicator {
        objectName: "refreshSpinner"
        anchors { horizontalCenter: parent.horizontalCenter; top: parent.top; topMargin: 8 }
        width: 28
        height: 28
        running: page.controller ? page.controller.refreshing : false
        visible: running
    }

    ListView {
        id: list
        objectName: "scriptsList"
        anchors.fill: parent
        model: page.controller ? page.controller.rows : null
        topMargin: page.controller && page.controller.refreshing ? 44 : 0
        boundsBehavior: Flickable.DragAndOvershootBounds
        clip: true

        // Pulled far enough and let go: refresh, with the spinner until the reload ends.
        readonly property int pullDistance: 64
        property bool pulledFarEnough: false
        onVerticalOvershootChanged: if (dragging && verticalOvershoot < -pullDistance) pulledFarEnough = true
        onDraggingChanged: {
            if (!dragging && pulledFarEnough) {
                pulledFarEnough = false
                page.controller.onRefreshControlPulled()
            }
        }

        delegate: SwipeDelegate {
            id: row
            required property int index
            required property string label
            required property bool isFolder
            required property bool canEdit
            objectName: "row" + index
            width: ListView.view.width
            height: 44
            swipe.enabled: canEdit
            onClicked: {
                if (swipe.position === 0)
                    page.controller.didSelectRow(index)
                else
                    swipe.close()
            }

            contentItem: Item {
                Text {
                    anchors { left: parent.left; right: chevron.left; verticalCenter: parent.verticalCenter }
                    text: row.label
                    elide: Text.ElideRight
                    font.pixelSize: Theme.bodySize
                    color: Theme.label
                }
                Text {
                    id: chevron
                    anchors { right: parent.right; verticalCenter: parent.verticalCenter }
                    text: row.isFolder ? "›" : ""
                    font.pixelSize: 24
                    color: "#C4C4C7"
                }
            }
            background: Rectangle {
                color: row.pressed ? Theme.highlight : Theme.background
                Rectangle {
                    anchors { left: parent.left; leftMargin: 16; right: parent.right; bottom: parent.bottom }
                    height: 0.5
                    color: Theme.separator
                }
            }
            swipe.right: AbstractButton {
                objectName: "deleteButton"
                height: row.height
                width: 88
                anchors.right: parent.right
                onClicked: {
                    row.swipe.close()
                    page.controller.commitDeleteRow(row.index)
                }
                background: Rectangle { color: Theme.destructive }
                contentItem: Text {
                    text: qsTr("Delete")
                    color: "white"
                    font.pixelSize: Theme.bodySize
                    horizontalAlignment: Text.AlignHCenter
                    verticalAlignment: Text.AlignVCenter
                }
            }
        }
    }
}
