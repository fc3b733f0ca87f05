import QtQuick
import QtQuick.Controls
import TPCompanion.Platform
import TPCompanion.Editor

// The history's rows: files (a dimmed one the engine no longer lists) or versions, each a
// title over a detail line. A tap opens the row.
ScreenPage {
    id: page
    required property TPHistoryVC controller

    Rectangle {
        anchors.fill: parent
        color: Theme.background
    }

    ActivityIndicator {
        objectName: "historyLoading"
        anchors.centerIn: parent
        running: page.controller.loading
    }

    Label {
        objectName: "historyEmpty"
        anchors.centerIn: parent
        visible: !page.controller.loading && list.count === 0
        text: page.controller.emptyText
        color: Theme.secondaryLabel
        font.pixelSize: Theme.bodySize
    }

    ListView {
        id: list
        objectName: "historyList"
        anchors.fill: parent
        clip: true
        model: page.controller.rows
        delegate: ItemDelegate {
            id: row
            required property int index
            required property string title
            required property string detail
            required property int mark
            objectName: "historyRow" + index
            width: ListView.view.width
            height: 60
            Accessible.name: title + ", " + detail
            onClicked: page.controller.didSelectRow(index)
            contentItem: Column {
                spacing: 2
                Text {
                    width: parent.width
                    text: row.title
                    elide: Text.ElideMiddle
                    font.pixelSize: Theme.bodySize
                    color: row.mark === TPTitledRowsModel.Dimmed ? Theme.secondaryLabel : Theme.label
                }
                Text {
                    width: parent.width
                    text: row.detail
                    elide: Text.ElideRight
                    font.pixelSize: 13
                    color: Theme.secondaryLabel
                }
            }
            background: RowBackground { pressed: row.pressed }
        }
    }
}
