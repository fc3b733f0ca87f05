import QtQuick
import QtQuick.Controls
import TPCompanion.Platform
import TPCompanion.Scripts

// Find, and replace, in every file: the fields and toggles over the results, grouped by file.
// A match opens its file at the match; an unread file has Retry. Everything is decided by the
// controller; this page lays out and forwards.
ScreenPage {
    id: page
    required property TPSearchVC controller
    readonly property var texts: controller.texts

    // The keyboard comes up with the screen, ready for the first letter.
    StackView.onActivated: queryField.forceActiveFocus()

    barItems: BarButton {
        objectName: "searchReloadButton"
        glyph: "↻"
        text: page.texts.reload
        onClicked: page.controller.onReloadTapped()
    }

    Rectangle {
        anchors.fill: parent
        color: Theme.background
    }

    Column {
        id: fields
        anchors { left: parent.left; right: parent.right; top: parent.top; topMargin: 4 }
        anchors { leftMargin: 8 + page.sideInset; rightMargin: 8 + page.sideInset }
        spacing: 6

        Row {
            width: parent.width
            spacing: 4
            ThemedTextField {
                id: queryField
                objectName: "searchInFilesField"
                width: parent.width - regexToggle.width - caseToggle.width - 2 * parent.spacing
                placeholderText: page.texts.find
                inputMethodHints: TPInputTraits.verbatim
                text: page.controller.query
                onTextEdited: page.controller.query = text
                Accessible.name: placeholderText
            }
            ToolTextButton {
                id: regexToggle
                objectName: "searchRegexToggle"
                text: ".*"
                checkable: true
                checked: page.controller.regularExpression
                Accessible.name: page.texts.regex
                onClicked: page.controller.regularExpression = checked
            }
            ToolTextButton {
                id: caseToggle
                objectName: "searchCaseToggle"
                text: page.texts.caseGlyph
                checkable: true
                checked: page.controller.caseSensitive
                Accessible.name: page.texts.matchCase
                onClicked: page.controller.caseSensitive = checked
            }
        }
        Row {
            width: parent.width
            spacing: 4
            ThemedTextField {
                objectName: "searchReplaceField"
                width: parent.width - replaceAll.width - parent.spacing
                placeholderText: page.texts.replace
                inputMethodHints: TPInputTraits.verbatim
                text: page.controller.replacement
                onTextEdited: page.controller.replacement = text
                Accessible.name: placeholderText
            }
            ToolTextButton {
                id: replaceAll
                objectName: "searchReplaceAll"
                text: page.texts.replaceAll
                enabled: page.controller.canReplace
                onClicked: page.controller.onReplaceAllTapped()
            }
        }
        ProgressBar {
            objectName: "searchProgress"
            width: parent.width
            visible: page.controller.reading
            value: page.controller.progress
        }
        Label {
            objectName: "searchStatus"
            width: parent.width
            visible: text !== ""
            text: page.controller.status
            elide: Text.ElideRight
            color: Theme.secondaryLabel
            font.pixelSize: 13
        }
    }

    ListView {
        objectName: "searchResults"
        reuseItems: true
        anchors { left: parent.left; right: parent.right; top: fields.bottom; bottom: parent.bottom }
        anchors { topMargin: 6; leftMargin: page.sideInset; rightMargin: page.sideInset }
        clip: true
        model: page.controller.rows
        // Light delegates: a new query replaces every row, and a row is made in a moment.
        delegate: Rectangle {
            id: row
            required property int index
            required property int kind
            required property string title
            required property string detail
            required property int line
            readonly property bool isFile: kind === TPSearchRowsModel.FileRow
            readonly property bool isMatch: kind === TPSearchRowsModel.MatchRow
            readonly property bool isUnread: kind === TPSearchRowsModel.UnreadRow
            readonly property bool opens: isFile || isMatch
            objectName: "searchRow" + index
            width: ListView.view.width
            height: isMatch || kind === TPSearchRowsModel.MoreRow ? 36 : 52
            color: tap.pressed && row.opens ? Theme.highlight : row.isFile ? Theme.groupedBackground : Theme.background
            Accessible.role: row.opens ? Accessible.Button : Accessible.StaticText
            Accessible.name: (isMatch ? line + ": " : "") + title.replace(/<[^>]*>/g, "")
            Accessible.onPressAction: if (row.opens) page.controller.didSelectRow(row.index)
            TapHandler {
                id: tap
                enabled: row.opens
                onTapped: page.controller.didSelectRow(row.index)
            }
            Item {
                anchors { fill: parent; leftMargin: row.isMatch ? 0 : 16; rightMargin: row.isUnread ? retry.width + 12 : 16 }
                Text {
                    visible: row.isMatch
                    width: 44
                    anchors.verticalCenter: parent.verticalCenter
                    horizontalAlignment: Text.AlignRight
                    rightPadding: 8
                    text: row.line
                    color: Theme.secondaryLabel
                    font.family: "monospace"
                    font.pixelSize: 13
                }
                // A match's line, in the code's own letters.
                Text {
                    visible: row.isMatch
                    x: 44
                    width: parent.width - x
                    anchors.verticalCenter: parent.verticalCenter
                    text: row.title
                    textFormat: Text.StyledText
                    elide: Text.ElideRight
                    font.family: "monospace"
                    font.pixelSize: 13
                    color: Theme.label
                }
                Column {
                    visible: !row.isMatch
                    width: parent.width
                    anchors.verticalCenter: parent.verticalCenter
                    spacing: 2
                    Text {
                        width: parent.width
                        text: row.title
                        textFormat: Text.PlainText
                        elide: Text.ElideMiddle
                        font.pixelSize: row.kind === TPSearchRowsModel.MoreRow ? 13 : Theme.bodySize
                        font.bold: row.isFile
                        color: row.kind === TPSearchRowsModel.MoreRow ? Theme.secondaryLabel : Theme.label
                    }
                    Text {
                        width: parent.width
                        visible: row.detail !== ""
                        text: row.detail
                        elide: Text.ElideMiddle
                        font.pixelSize: 13
                        color: row.isUnread ? Theme.destructive : Theme.secondaryLabel
                    }
                }
            }
            Rectangle {
                anchors { left: parent.left; leftMargin: 16; right: parent.right; bottom: parent.bottom }
                height: 0.5
                color: Theme.separator
            }
            // Only an unread file's row has a button: the others stay light.
            Loader {
                id: retry
                anchors { right: parent.right; rightMargin: 4; verticalCenter: parent.verticalCenter }
                active: row.isUnread
                sourceComponent: ToolTextButton {
                    objectName: "searchRetry" + row.index
                    text: page.texts.retry
                    onClicked: page.controller.onRetryTapped(row.index)
                }
            }
        }
    }
}
