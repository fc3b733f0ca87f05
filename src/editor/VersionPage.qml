import QtQuick
import QtQuick.Controls
import TPCompanion.Platform
import TPCompanion.Editor

// One version, read-only, in the editor's font: its own text with line numbers, or its
// changes as a diff (− only in this version, on red; + only in the other text, on green;
// unchanged runs folded) under a legend that names both sides. Restore is in a bar at the
// bottom, where no button of the editor is: a tap meant for the editor's Run, on a version
// screen left open, restores nothing.
ScreenPage {
    id: page
    required property TPVersionVC controller
    readonly property var texts: controller.texts

    Rectangle {
        anchors.fill: parent
        color: Theme.background
    }

    Column {
        id: header
        anchors { left: parent.left; right: parent.right; top: parent.top }
        topPadding: 8
        bottomPadding: 4
        spacing: 6
        SegmentedControl {
            objectName: "versionModes"
            anchors.horizontalCenter: parent.horizontalCenter
            segments: [page.texts.showText, page.texts.showChanges]
            currentIndex: page.controller && page.controller.showingChanges ? 1 : 0
            onActivated: index => page.controller.showingChanges = index === 1
        }
        Text {
            objectName: "diffLegend"
            visible: page.controller.showingChanges
            anchors { left: parent.left; right: parent.right; leftMargin: 12; rightMargin: 12 }
            text: page.controller.legend
            elide: Text.ElideMiddle
            horizontalAlignment: Text.AlignHCenter
            font.pixelSize: 13
            color: Theme.secondaryLabel
        }
    }

    ActivityIndicator {
        anchors.centerIn: parent
        running: page.controller.loading
    }

    Label {
        objectName: "noDifferences"
        anchors.centerIn: parent
        visible: page.controller.showingChanges && page.controller.noDifferences
        text: page.texts.same
        color: Theme.secondaryLabel
        font.pixelSize: Theme.bodySize
    }

    ListView {
        objectName: "versionLines"
        anchors { left: parent.left; right: parent.right; top: header.bottom; bottom: restoreBar.top }
        clip: true
        model: page.controller.showingChanges ? page.controller.changes : page.controller.lines
        delegate: Rectangle {
            id: lineRow
            required property string title
            required property string detail
            required property int mark
            width: ListView.view.width
            height: line.implicitHeight + 2
            color: mark === TPTitledRowsModel.Added ? Theme.addedLine
                   : mark === TPTitledRowsModel.Removed ? Theme.removedLine : "transparent"
            readonly property string sign: mark === TPTitledRowsModel.Added ? "+"
                                          : mark === TPTitledRowsModel.Removed ? "−" : ""
            Accessible.name: (sign !== "" ? sign + " " : "") + title
            Text {
                id: gutter
                objectName: "versionLineGutter"
                anchors { left: parent.left; top: parent.top; leftMargin: 4 }
                width: page.controller.showingChanges ? 16 : 36
                horizontalAlignment: Text.AlignRight
                text: page.controller.showingChanges ? lineRow.sign : lineRow.detail
                font: page.controller.font
                color: Theme.secondaryLabel
            }
            Text {
                id: line
                objectName: "versionLine"
                anchors { left: gutter.right; right: parent.right; leftMargin: 8; rightMargin: 8 }
                text: lineRow.title
                wrapMode: Text.WrapAtWordBoundaryOrAnywhere
                textFormat: Text.PlainText
                font: page.controller.font
                color: lineRow.mark === TPTitledRowsModel.Folded ? Theme.secondaryLabel : Theme.label
            }
        }
    }

    Rectangle {
        id: restoreBar
        objectName: "restoreBar"
        anchors { left: parent.left; right: parent.right; bottom: parent.bottom }
        height: Theme.barHeight
        color: Theme.barBackground
        Rectangle {
            anchors { left: parent.left; right: parent.right; top: parent.top }
            height: 0.5
            color: Theme.separator
        }
        BarButton {
            objectName: "restoreButton"
            anchors.centerIn: parent
            text: page.texts.restore
            enabled: page.controller && !page.controller.loading
            onClicked: page.controller.onRestoreTapped()
        }
    }
}
