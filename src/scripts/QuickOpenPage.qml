import QtQuick
import QtQuick.Controls
import TPCompanion.Platform
import TPCompanion.Scripts

// A search field over the files that match it, best first; with nothing typed, the
// favourites and the files opened last. A row opens its file; its Run button runs it.
ScreenPage {
    id: page
    required property TPQuickOpenVC controller
    readonly property var texts: controller.texts

    // The keyboard comes up with the screen, ready for the first letter.
    StackView.onActivated: queryField.forceActiveFocus()

    Rectangle {
        anchors.fill: parent
        color: Theme.background
    }

    ThemedTextField {
        id: queryField
        objectName: "quickOpenField"
        anchors { left: parent.left; right: parent.right; top: parent.top; topMargin: 4 }
        anchors { leftMargin: 8 + page.sideInset; rightMargin: 8 + page.sideInset }
        rightPadding: clearQuery.visible ? clearQuery.width : leftPadding
        placeholderText: page.texts.placeholder
        inputMethodHints: TPInputTraits.verbatim
        text: page.controller.query
        onTextEdited: page.controller.query = text
        onAccepted: page.controller.didSelectRow(0)
        Accessible.name: placeholderText
        ClearTextButton {
            id: clearQuery
            objectName: "clearQueryButton"
            field: queryField
            Accessible.name: page.texts.clear
            onClicked: page.controller.query = ""
        }
    }

    ActivityIndicator {
        objectName: "quickOpenLoading"
        anchors.centerIn: parent
        running: page.controller.loading
    }

    Label {
        objectName: "quickOpenNoMatches"
        anchors { left: parent.left; right: parent.right; top: queryField.bottom; topMargin: 16 }
        visible: page.controller.noMatches
        text: page.texts.noMatches
        horizontalAlignment: Text.AlignHCenter
        color: Theme.secondaryLabel
        font.pixelSize: Theme.bodySize
    }

    ListView {
        objectName: "quickOpenList"
        // Each key replaces the rows: their delegates are reused, not made anew.
        reuseItems: true
        anchors { left: parent.left; right: parent.right; top: queryField.bottom; bottom: parent.bottom }
        anchors { topMargin: 4; leftMargin: page.sideInset; rightMargin: page.sideInset }
        clip: true
        model: page.controller.rows
        section.property: "heading"
        section.delegate: Label {
            required property string section
            width: ListView.view.width
            height: section !== "" ? 32 : 0
            visible: section !== ""
            leftPadding: 16
            verticalAlignment: Text.AlignBottom
            text: section.toUpperCase()
            color: Theme.secondaryLabel
            font.pixelSize: 13
        }
        delegate: ItemDelegate {
            id: row
            required property int index
            required property string name
            required property string folder
            required property bool dimmed
            required property bool runEnabled
            objectName: "quickOpenRow" + index
            width: ListView.view.width
            height: 56
            padding: 0
            leftPadding: 16
            rightPadding: 60
            enabled: !row.dimmed
            Accessible.name: row.name.replace(/<[^>]*>/g, "") + ", " + row.folder.replace(/<[^>]*>/g, "")
            onClicked: page.controller.didSelectRow(index)
            contentItem: Column {
                spacing: 2
                Text {
                    width: parent.width
                    text: row.name
                    textFormat: Text.StyledText
                    elide: Text.ElideMiddle
                    font.pixelSize: Theme.bodySize
                    color: row.dimmed ? Theme.secondaryLabel : Theme.label
                }
                Text {
                    width: parent.width
                    text: row.folder
                    textFormat: Text.StyledText
                    elide: Text.ElideMiddle
                    font.pixelSize: 13
                    color: Theme.secondaryLabel
                }
            }
            background: RowBackground { pressed: row.pressed }
            ToolTextButton {
                objectName: "quickOpenRun" + row.index
                anchors { right: parent.right; rightMargin: 4; verticalCenter: parent.verticalCenter }
                text: page.texts.run
                visible: !row.dimmed
                enabled: row.runEnabled
                onClicked: page.controller.onRunTapped(row.index)
            }
        }
    }
}
