import QtQuick
import QtQuick.Controls
import TPCompanion.Platform
import TPCompanion.Editor

// The script's functions under the editor's tool bar, in the order they appear; a tap puts
// the cursor on the function's line and closes the outline.
Rectangle {
    id: panel
    required property TPCodeEditor code
    required property var texts
    // The editor's font: a function's name reads as it does in the script.
    required property font codeFont

    color: Theme.background
    implicitHeight: Math.min(list.contentHeight, 5.5 * 44) + (list.count === 0 ? 44 : 0) + 0.5

    Label {
        objectName: "outlineEmpty"
        anchors { left: parent.left; right: parent.right; top: parent.top; leftMargin: 16 }
        height: 44
        verticalAlignment: Text.AlignVCenter
        visible: list.count === 0
        text: panel.texts.editor_outline_empty
        color: Theme.secondaryLabel
        font.pixelSize: Theme.bodySize
    }

    ListView {
        id: list
        objectName: "outlineList"
        anchors { left: parent.left; right: parent.right; top: parent.top; bottom: separator.top }
        clip: true
        model: panel.code.outline
        delegate: ItemDelegate {
            id: row
            required property int index
            required property string title
            required property string detail
            objectName: "outlineRow" + index
            width: ListView.view.width
            height: 44
            padding: 0
            leftPadding: 16
            rightPadding: 16
            Accessible.name: title + ", " + detail
            onClicked: panel.code.goToOutlineRow(index)
            contentItem: Item {
                // The line number keeps a column of its own at the right.
                Text {
                    anchors { left: parent.left; right: parent.right; rightMargin: 80; verticalCenter: parent.verticalCenter }
                    text: row.title
                    elide: Text.ElideMiddle
                    font.family: panel.codeFont.family
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
