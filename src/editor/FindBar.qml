import QtQuick
import QtQuick.Controls
import TPCompanion.Platform
import TPCompanion.Editor

// Find, replace and go-to-line over the editor's text. It forwards what is typed and tapped
// to the find-and-replace controller and shows its count.
Rectangle {
    id: bar
    required property TPFindReplace find
    required property TPCodeEditor code
    required property var texts

    implicitHeight: column.implicitHeight + 12
    color: Theme.groupedBackground
    // Opening the bar is asking to search: the search field takes the keyboard.
    onVisibleChanged: if (visible) focusFind()

    function focusFind() {
        findField.forceActiveFocus()
    }
    // The line field takes the keyboard (Ctrl+G).
    function focusGoToLine() {
        lineField.forceActiveFocus()
    }

    Column {
        id: column
        anchors { left: parent.left; right: parent.right; top: parent.top; margins: 6 }
        spacing: 6

        Row {
            width: parent.width
            spacing: 6
            ThemedTextField {
                id: findField
                objectName: "findField"
                width: parent.width - count.width - previous.width - next.width - 3 * parent.spacing
                placeholderText: bar.texts.find_placeholder
                inputMethodHints: TPInputTraits.verbatim
                text: bar.find.query
                onTextEdited: bar.find.query = text
                onAccepted: bar.find.findNext()
                Accessible.name: bar.texts.find_placeholder
            }
            Label {
                id: count
                objectName: "matchCount"
                anchors.verticalCenter: parent.verticalCenter
                text: bar.code.findNote !== "" ? bar.code.findNote
                                               : bar.find.currentMatch + "/" + bar.find.matchCount
                color: bar.find.validQuery ? Theme.secondaryLabel : Theme.destructive
            }
            ToolTextButton {
                id: previous
                objectName: "findPrevious"
                text: "▲"
                Accessible.name: bar.texts.find_previous
                onClicked: bar.find.findPrevious()
            }
            ToolTextButton {
                id: next
                objectName: "findNext"
                text: "▼"
                Accessible.name: bar.texts.find_next
                onClicked: bar.find.findNext()
            }
        }
        Row {
            width: parent.width
            spacing: 6
            ThemedTextField {
                objectName: "replaceField"
                width: parent.width - replaceOne.width - replaceAll.width - 2 * parent.spacing
                placeholderText: bar.texts.replace_placeholder
                inputMethodHints: TPInputTraits.verbatim
                text: bar.find.replacement
                onTextEdited: bar.find.replacement = text
                Accessible.name: bar.texts.replace_placeholder
            }
            ToolTextButton {
                id: replaceOne
                objectName: "replaceOne"
                text: bar.texts.find_replace
                onClicked: bar.find.replaceOne()
            }
            ToolTextButton {
                id: replaceAll
                objectName: "replaceAll"
                text: bar.texts.find_replace_all
                onClicked: bar.find.replaceAll()
            }
        }
        Row {
            spacing: 6
            ToolTextButton {
                objectName: "regexToggle"
                text: ".*"
                checkable: true
                checked: bar.find.regularExpression
                Accessible.name: bar.texts.find_regex
                onClicked: bar.find.regularExpression = checked
            }
            ToolTextButton {
                objectName: "caseToggle"
                text: bar.texts.find_case_glyph
                checkable: true
                checked: bar.find.caseSensitive
                Accessible.name: bar.texts.find_case
                onClicked: bar.find.caseSensitive = checked
            }
            ThemedTextField {
                id: lineField
                objectName: "goToLineField"
                width: 90
                placeholderText: bar.texts.goto_placeholder
                inputMethodHints: TPInputTraits.digits
                validator: IntValidator { bottom: 1 }
                onAccepted: bar.code.goToLine(parseInt(text))
                Accessible.name: bar.texts.goto_placeholder
            }
            ToolTextButton {
                objectName: "goToLine"
                text: bar.texts.goto_go
                onClicked: if (lineField.acceptableInput) bar.code.goToLine(parseInt(lineField.text))
            }
        }
    }
}
