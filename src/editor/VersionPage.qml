import QtQuick
import QtQuick.Controls
import TPCompanion.Platform
import TPCompanion.Editor

// One version, read-only, in the editor's font: lines only the version has on green, lines
// only the editor's text has on red. Restore is in the bar.
ScreenPage {
    id: page
    required property TPVersionVC controller

    barItems: BarButton {
        objectName: "restoreButton"
        text: page.controller ? page.controller.restoreTitle : ""
        enabled: page.controller && !page.controller.loading
        onClicked: page.controller.onRestoreTapped()
    }

    Rectangle {
        anchors.fill: parent
        color: Theme.background
    }

    BusyIndicator {
        anchors.centerIn: parent
        running: page.controller.loading
        visible: running
    }

    ListView {
        objectName: "versionLines"
        anchors.fill: parent
        clip: true
        model: page.controller.lines
        delegate: Rectangle {
            required property string title
            required property string mark
            width: ListView.view.width
            height: line.implicitHeight + 2
            color: mark === "added" ? Theme.addedLine : mark === "removed" ? Theme.removedLine : "transparent"
            Accessible.name: (mark === "added" ? "+ " : mark === "removed" ? "- " : "") + title
            Text {
                id: line
                objectName: "versionLine"
                anchors { left: parent.left; right: parent.right; leftMargin: 8; rightMargin: 8 }
                text: parent.title
                wrapMode: Text.WrapAtWordBoundaryOrAnywhere
                textFormat: Text.PlainText
                font: page.controller.font
                color: Theme.label
            }
        }
    }
}
