import QtQuick
import QtQuick.Controls
import TPCompanion.Platform
import TPCompanion.Editor

// A short list of a script's lines to go to, beside the editor's text: the functions of the
// outline, or the lint's warnings. Each row is a title with its line at the right; a tap
// reports the row. Its items are named after `namePrefix` ("outlineRow0", "lintRow0").
Rectangle {
    id: panel
    required property TPTitledRowsModel model
    required property string namePrefix
    // Shown when there are no rows.
    property string emptyText: ""
    // The titles' font family: a function's name reads as it does in the script.
    property string titleFamily: ""
    signal chosen(int index)

    color: Theme.background
    implicitHeight: Math.min(list.contentHeight, 5.5 * 44) + (list.count === 0 ? 44 : 0) + 0.5

    Label {
        objectName: panel.namePrefix + "Empty"
        anchors { left: parent.left; right: parent.right; top: parent.top; leftMargin: 16 }
        height: 44
        verticalAlignment: Text.AlignVCenter
        visible: list.count === 0
        text: panel.emptyText
        color: Theme.secondaryLabel
        font.pixelSize: Theme.bodySize
    }

    ListView {
        id: list
        objectName: panel.namePrefix + "List"
        anchors { left: parent.left; right: parent.right; top: parent.top; bottom: separator.top }
        clip: true
        model: panel.model
        delegate: ItemDelegate {
            id: row
            required property int index
            required property string title
            required property string detail
            objectName: panel.namePrefix + "Row" + index
            width: ListView.view.width
            height: 44
            padding: 0
            leftPadding: 16
            rightPadding: 16
            Accessible.name: title + ", " + detail
            onClicked: panel.chosen(index)
            contentItem: Item {
                // The line number keeps a column of its own at the right.
                Text {
                    anchors { left: parent.left; right: parent.right; rightMargin: 80; verticalCenter: parent.verticalCenter }
                    text: row.title
                    elide: Text.ElideMiddle
                    font.family: panel.titleFamily
                    font.pixelSize: Theme.bodySize
                    color: Theme.label
                }
                Text {
                    anchors { right: parent.right; verticalCenter: parent.verticalCenter }
                    text: row.detail
                    font.pixelSize: 13
                    color: Theme.secondaryLabel
                }
            }
            background: Rectangle {
                color: row.pressed ? Theme.highlight : Theme.background
            }
        }
    }

    Rectangle {
        id: separator
        anchors { left: parent.left; right: parent.right; bottom: parent.bottom }
        height: 0.5
        color: Theme.separator
    }
}
