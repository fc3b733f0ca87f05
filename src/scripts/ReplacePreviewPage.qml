import QtQuick
import QtQuick.Controls
import TPCompanion.Platform
import TPCompanion.Scripts

// What a replace in all files will change, file by file: each file with its toggle, over its
// lines as they are (−) and as they will be (+). Replace, in the bar, saves the files left in.
ScreenPage {
    id: page
    required property TPReplacePreviewVC controller

    barItems: BarButton {
        objectName: "replaceApplyButton"
        text: page.controller.texts.apply
        enabled: page.controller.canApply
        onClicked: page.controller.onApplyTapped()
    }

    Rectangle {
        anchors.fill: parent
        color: Theme.background
    }

    Label {
        id: status
        objectName: "replaceStatus"
        anchors { left: parent.left; right: parent.right; top: parent.top }
        height: visible ? implicitHeight + 12 : 0
        visible: page.controller.applying
        padding: 6
        leftPadding: 16 + page.sideInset
        text: page.controller.status
        color: Theme.secondaryLabel
        font.pixelSize: 13
    }

    ListView {
        objectName: "replacePreviewList"
        anchors { left: parent.left; right: parent.right; top: status.bottom; bottom: parent.bottom }
        anchors { leftMargin: page.sideInset; rightMargin: page.sideInset }
        clip: true
        model: page.controller.rows
        delegate: Rectangle {
            id: row
            required property int index
            required property int kind
            required property string title
            required property string detail
            required property int line
            required property bool included
            required property bool includable
            readonly property bool isFile: kind === TPSearchRowsModel.FileRow
            readonly property bool removed: kind === TPSearchRowsModel.BeforeRow
            objectName: "replaceRow" + index
            width: ListView.view.width
            height: isFile ? Math.max(56, fileColumn.implicitHeight + 12) : lineText.implicitHeight + 6
            color: isFile ? Theme.groupedBackground : removed ? Theme.removedLine : Theme.addedLine
            Accessible.name: title

            Column {
                id: fileColumn
                visible: row.isFile
                anchors { left: parent.left; leftMargin: 16; right: toggle.left; verticalCenter: parent.verticalCenter }
                spacing: 2
                Text {
                    width: parent.width
                    text: row.title
                    elide: Text.ElideMiddle
                    font.bold: true
                    font.pixelSize: Theme.bodySize
                    color: row.included ? Theme.label : Theme.secondaryLabel
                }
                Text {
                    width: parent.width
                    text: row.detail
                    wrapMode: Text.Wrap
                    font.pixelSize: 13
                    color: Theme.secondaryLabel
                }
            }
            ToggleSwitch {
                id: toggle
                objectName: "replaceInclude" + row.index
                visible: row.isFile
                anchors { right: parent.right; rightMargin: 12; verticalCenter: parent.verticalCenter }
                enabled: row.includable && !page.controller.applying
                checked: row.included
                Accessible.name: page.controller.texts.include + ", " + row.title
                onToggled: page.controller.setIncluded(row.index, checked)
            }
            Text {
                id: lineText
                visible: !row.isFile
                anchors { left: parent.left; right: parent.right; verticalCenter: parent.verticalCenter }
                leftPadding: 8
                rightPadding: 8
                text: (row.removed ? "− " : "+ ") + row.line + "  " + row.title
                textFormat: Text.PlainText
                wrapMode: Text.WrapAnywhere
                maximumLineCount: 6
                elide: Text.ElideRight
                font.family: "monospace"
                font.pixelSize: 13
                color: Theme.label
            }
        }
    }
}
