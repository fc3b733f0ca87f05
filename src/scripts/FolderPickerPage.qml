import QtQuick
import QtQuick.Controls
import TPCompanion.Platform
import TPCompanion.Scripts

// The folders an entry may move into, the root first; a tap moves it there.
ScreenPage {
    id: page
    required property TPFolderPickerVC controller

    Rectangle {
        anchors.fill: parent
        color: Theme.background
    }

    ActivityIndicator {
        objectName: "folderPickerLoading"
        anchors.centerIn: parent
        running: page.controller.loading
    }

    ListView {
        objectName: "folderPickerList"
        anchors.fill: parent
        anchors.leftMargin: page.sideInset
        anchors.rightMargin: page.sideInset
        clip: true
        model: page.controller.rows
        delegate: ItemDelegate {
            id: row
            required property int index
            required property string title
            required property int mark
            objectName: "folderRow" + index
            width: ListView.view.width
            height: 44
            padding: 0
            leftPadding: 16
            rightPadding: 16
            enabled: row.mark === TPTitledRowsModel.Plain
            Accessible.name: title
            onClicked: page.controller.didSelectRow(index)
            contentItem: Row {
                spacing: 6
                Text {
                    anchors.verticalCenter: parent.verticalCenter
                    text: "📁"
                    font.pixelSize: Theme.bodySize
                    opacity: row.mark === TPTitledRowsModel.Dimmed ? 0.5 : 1
                }
                Text {
                    anchors.verticalCenter: parent.verticalCenter
                    width: parent.width - 30
                    text: row.title
                    elide: Text.ElideMiddle
                    font.pixelSize: Theme.bodySize
                    color: row.mark === TPTitledRowsModel.Dimmed ? Theme.secondaryLabel : Theme.label
                }
            }
            background: RowBackground { pressed: row.pressed }
        }
    }
}
