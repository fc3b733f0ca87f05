import QtQuick
import QtQuick.Controls
import TPCompanion.Platform
import TPCompanion.Scripts

// One folder's rows, under a search field. Each row has its buttons (run, menu); folders
// carry a chevron; only file rows swipe to reveal Delete; a long press opens the row's menu.
// Pulling the list down refreshes it.
ScreenPage {
    id: page
    required property TPScriptsListVC controller

    // Opening any file by name, and searching the text of every file, from the top of the
    // tree.
    leadingBarItems: Row {
        BarButton {
            objectName: "quickOpenButton"
            // A magnifier; the words are its spoken name.
            glyph: "⚲"
            text: page.controller ? page.controller.texts.quickOpen : ""
            onClicked: page.controller.onQuickOpenTapped()
        }
        BarButton {
            id: searchFilesButton
            objectName: "searchFilesButton"
            // A page under a magnifier: search in the files' text; the words are its name.
            // Drawn, not a glyph: the one glyph for it is only in a monospaced font, which
            // the first screen would otherwise load for this button alone.
            contentItem: TPSvgIcon {
                implicitWidth: 24
                implicitHeight: 24
                source: "icons/doc.magnifyingglass.svg"
                color: Theme.tint
                opacity: searchFilesButton.pressed ? 0.4 : 1
            }
            text: page.controller ? page.controller.texts.searchFiles : ""
            onClicked: page.controller.onSearchInFilesTapped()
        }
    }

    // A desktop's or a hardware keyboard's shortcut, while this list is the one shown.
    Shortcut {
        sequence: "Ctrl+Shift+F"
        enabled: page.visible && page.controller !== null
        onActivated: page.controller.onSearchInFilesTapped()
    }
    barItems: Row {
        BarButton {
            objectName: "historyButton"
            // A clock face; the word is its spoken name.
            glyph: "◷"
            text: page.controller ? page.controller.texts.history : ""
            onClicked: page.controller.onHistoryTapped()
        }
        BarButton {
            objectName: "refreshButton"
            // Stays tappable while a reload is in flight: nothing is cancelled. Its spinner
            // takes the glyph's place, and the bar's title stays where it is.
            glyph: "↻"
            contentHidden: page.controller ? page.controller.reloading : false
            text: page.controller ? page.controller.texts.refresh : ""
            onClicked: page.controller.onRefreshTapped()
            ActivityIndicator {
                objectName: "refreshActivity"
                anchors.centerIn: parent
                width: 24
                height: 24
                running: page.controller ? page.controller.reloading : false
            }
        }
        BarButton {
            objectName: "addButton"
            glyph: "+"
            text: page.controller ? page.controller.texts.add : ""
            onClicked: page.controller.onAddTapped(this)
        }
    }

    Rectangle {
        anchors.fill: parent
        color: Theme.background
    }

    ActivityIndicator {
        objectName: "refreshSpinner"
        anchors { horizontalCenter: parent.horizontalCenter; top: parent.top; topMargin: 8 }
        width: 28
        height: 28
        running: page.controller ? page.controller.refreshing : false
    }

    ListView {
        id: list
        objectName: "scriptsList"
        anchors.fill: parent
        model: page.controller ? page.controller.rows : null
        topMargin: page.controller && page.controller.refreshing ? 44 : 0

        header: Item {
            width: ListView.view.width
            height: 52
            ThemedTextField {
                id: searchField
                objectName: "searchField"
                anchors { left: parent.left; right: parent.right; verticalCenter: parent.verticalCenter }
                anchors { leftMargin: 8 + page.sideInset; rightMargin: 8 + page.sideInset }
                rightPadding: clearSearch.visible ? clearSearch.width : leftPadding
                placeholderText: page.controller ? page.controller.texts.search : ""
                inputMethodHints: TPInputTraits.verbatim
                text: page.controller ? page.controller.searchText : ""
                onTextEdited: page.controller.searchText = text
                Accessible.name: placeholderText
                ClearTextButton {
                    id: clearSearch
                    objectName: "clearSearchButton"
                    field: searchField
                    Accessible.name: page.controller ? page.controller.texts.clearSearch : ""
                    onClicked: page.controller.clearSearch()
                }
            }
        }
        footer: Text {
            objectName: "noMatches"
            width: ListView.view.width
            height: visible ? 60 : 0
            visible: page.controller ? page.controller.noMatches : false
            text: page.controller ? page.controller.texts.noMatches : ""
            horizontalAlignment: Text.AlignHCenter
            verticalAlignment: Text.AlignVCenter
            color: Theme.secondaryLabel
            font.pixelSize: Theme.bodySize
        }
        boundsBehavior: Flickable.DragAndOvershootBounds
        clip: true

        // Pulled far enough and let go: refresh, with the spinner until the reload ends.
        onVerticalOvershootChanged: if (dragging) page.controller.pullToRefresh.dragMoved(verticalOvershoot)
        onDraggingChanged: if (!dragging) page.controller.pullToRefresh.dragEnded()

        delegate: SwipeDelegate {
            id: row
            required property int index
            required property string label
            required property bool isFolder
            required property bool canEdit
            required property bool unreachable
            required property var buttons
            objectName: "row" + index
            width: ListView.view.width
            // The row's buttons are 44 high, as tall as the row: with the style's padding the
            // content would be laid out taller than its room and sink to the row's bottom.
            verticalPadding: unreachable ? 8 : 0
            leftPadding: 12 + page.sideInset
            rightPadding: 12 + page.sideInset
            // A note under the name wraps to as many lines as it needs on a narrow phone.
            implicitHeight: unreachable ? Math.max(60, implicitContentHeight + topPadding + bottomPadding) : 44
            swipe.enabled: canEdit
            Accessible.name: unreachable ? label + ". " + page.controller.texts.unreachable : label
            onClicked: if (page.controller.onRowTapped(index, swipe.position !== 0)) swipe.close()
            // The row's two buttons, and the parts its layout reads, each handed over as it
            // is made: the contentItem is deferred, so nothing inside it may have an id.
            property Item firstButton: null
            property Item secondButton: null
            property Item trailingItems: null
            property Item nameColumn: null
            onPressAndHold: page.controller.onRowPressedAndHeld(index, firstButton, secondButton)

            // Laid out with anchors: the buttons and a folder's chevron at the right end,
            // the name in the room they leave.
            contentItem: Item {
                implicitHeight: Math.max(44, row.nameColumn ? row.nameColumn.implicitHeight : 0)
                // A file's row holds two buttons (run, menu), a folder's row one (menu).
                Row {
                    Component.onCompleted: row.trailingItems = this
                    // On whole pixels, as a layout places them: the texts stay crisp.
                    x: Math.round(parent.width - width)
                    anchors.verticalCenter: parent.verticalCenter
                    RowButton {
                        rowIndex: row.index
                        Component.onCompleted: row.firstButton = this
                        entry: row.buttons[0]
                        onClicked: page.controller.onRowButtonTapped(entry.action, row.index, this)
                    }
                    RowButton {
                        rowIndex: row.index
                        Component.onCompleted: row.secondButton = this
                        entry: row.buttons[1]
                        onClicked: page.controller.onRowButtonTapped(entry.action, row.index, this)
                    }
                    Text {
                        objectName: "rowChevron"
                        anchors.verticalCenter: parent.verticalCenter
                        width: Math.ceil(implicitWidth)
                        text: row.isFolder ? "›" : ""
                        font.pixelSize: 24
                        color: Theme.chevron
                    }
                }
                Column {
                    Component.onCompleted: row.nameColumn = this
                    anchors { left: parent.left; right: parent.right; verticalCenter: parent.verticalCenter }
                    anchors.rightMargin: 4 + (row.trailingItems ? row.trailingItems.width : 0)
                    Text {
                        objectName: "rowLabel"
                        width: parent.width
                        text: row.unreachable ? row.label + "  ⚠" : row.label
                        elide: Text.ElideRight
                        font.pixelSize: Theme.bodySize
                        color: Theme.label
                    }
                    Text {
                        objectName: "unreachableNote"
                        width: parent.width
                        visible: row.unreachable
                        text: row.unreachable ? page.controller.texts.unreachable : ""
                        wrapMode: Text.Wrap
                        font.pixelSize: 12
                        color: Theme.secondaryLabel
                    }
                }
            }
            background: RowBackground {
                pressed: row.pressed
                separatorStart: 16 + page.sideInset
                separatorEndInset: page.sideInset
            }
            swipe.right: AbstractButton {
                objectName: "deleteButton"
                height: row.height
                width: 88
                anchors { right: parent.right; rightMargin: page.sideInset }
                Accessible.name: page.controller.texts.delete
                onClicked: {
                    row.swipe.close()
                    page.controller.commitDeleteRow(row.index)
                }
                background: Rectangle { color: Theme.destructive }
                contentItem: Text {
                    objectName: "deleteButtonText"
                    text: page.controller.texts.delete
                    color: Theme.onTint
                    font.pixelSize: Theme.bodySize
                    horizontalAlignment: Text.AlignHCenter
                    verticalAlignment: Text.AlignVCenter
                }
            }
        }
    }

    // Made only while it is offered: most launches never delete anything.
    Loader {
        anchors { left: parent.left; right: parent.right; bottom: parent.bottom; margins: 8 }
        anchors { leftMargin: 8 + page.sideInset; rightMargin: 8 + page.sideInset }
        active: page.controller !== null && page.controller.undoBar.shown
        sourceComponent: UndoBar {
            objectName: "undoBar"
            model: page.controller.undoBar
        }
    }
}
