import QtQuick
import QtQuick.Controls
import TPCompanion.Platform
import TPCompanion.Editor

// The script's text in a monospaced code editor with typing aids off. The text item only
// shows the controller's text: it is attached to the code editor, which keeps the exact
// text and handles the editing keys. The keyboard's frame is handed to the controller,
// which decides the bottom inset.
ScreenPage {
    id: page
    required property TPEditorVC controller
    readonly property TPCodeEditor code: controller.code
    readonly property var texts: controller.toolTexts

    barItems: Row {
        BarButton {
            objectName: "saveButton"
            text: page.controller ? page.controller.saveTitle : ""
            onClicked: page.controller.onSaveTapped()
        }
        BarButton {
            objectName: "runButton"
            text: page.controller ? page.controller.runTitle : ""
            onClicked: page.controller.onRunTapped()
        }
    }

    Rectangle {
        anchors.fill: parent
        color: Theme.background
    }

    Rectangle {
        id: tools
        anchors { left: parent.left; right: parent.right; top: parent.top }
        height: 44
        color: Theme.barBackground

        // Every tool is a glyph of one width, so each keeps its place whatever the language;
        // their names are for accessibility.
        Row {
            anchors { left: parent.left; verticalCenter: parent.verticalCenter }
            ToolTextButton {
                objectName: "undoButton"
                text: "↶"
                textSize: 22
                Accessible.name: page.texts.editor_undo
                enabled: page.code.canUndo
                onClicked: page.code.undo()
            }
            ToolTextButton {
                objectName: "redoButton"
                text: "↷"
                textSize: 22
                Accessible.name: page.texts.editor_redo
                enabled: page.code.canRedo
                onClicked: page.code.redo()
            }
            ToolTextButton {
                objectName: "symbolsButton"
                text: "{ }"
                Accessible.name: page.texts.editor_symbols
                checked: page.controller.symbolRowShown
                onClicked: page.controller.symbolRowRequested = !page.controller.symbolRowRequested
            }
            ToolTextButton {
                objectName: "outlineButton"
                text: "≡"
                textSize: 22
                Accessible.name: page.texts.editor_outline
                checked: page.code.outlineOpen
                onClicked: page.code.outlineOpen = !page.code.outlineOpen
            }
        }
        ActivityIndicator {
            objectName: "loadingIndicator"
            anchors.centerIn: parent
            height: 28
            width: 28
            running: page.controller.loading
            Accessible.name: page.texts.editor_loading
        }
        Row {
            anchors { right: parent.right; verticalCenter: parent.verticalCenter }
            ToolTextButton {
                objectName: "favouriteButton"
                text: page.controller.favourite ? "★" : "☆"
                textSize: 22
                Accessible.name: page.texts.editor_favourite
                onClicked: page.controller.toggleFavourite()
            }
            ToolTextButton {
                objectName: "historyButton"
                text: "◷"
                textSize: 22
                Accessible.name: page.texts.history_title
                onClicked: page.controller.onHistoryTapped()
            }
            ToolTextButton {
                objectName: "findButton"
                // The magnifier is drawn small in its font.
                text: "⌕"
                textSize: 30
                Accessible.name: page.texts.editor_find
                checked: page.code.findOpen
                onClicked: page.code.findOpen = !page.code.findOpen
            }
            ToolTextButton {
                objectName: "wrapButton"
                text: "↵"
                textSize: 22
                Accessible.name: page.texts.editor_wrap
                checked: page.controller.wrap
                onClicked: page.controller.wrap = !page.controller.wrap
            }
        }
        Rectangle {
            anchors { left: parent.left; right: parent.right; bottom: parent.bottom }
            height: 0.5
            color: Theme.separator
        }
    }

    LinesPanel {
        id: outlinePanel
        objectName: "outlinePanel"
        namePrefix: "outline"
        visible: page.code.outlineOpen
        // Above the text, which moves down to make room.
        anchors { left: parent.left; right: parent.right; top: tools.bottom }
        height: visible ? implicitHeight : 0
        model: page.code.outline
        emptyText: page.texts.editor_outline_empty
        titleFamily: page.controller.font.family
        onChosen: index => page.code.goToOutlineRow(index)
    }

    FindBar {
        id: findBar
        objectName: "findBar"
        visible: page.code.findOpen
        anchors { left: parent.left; right: parent.right; top: outlinePanel.bottom }
        height: visible ? implicitHeight : 0
        find: page.code.find
        code: page.code
        texts: page.texts
    }

    // What to know before saving (the file was not read, is not text, a draft was kept) and
    // what can be done about it, as the controller's notice says.
    Rectangle {
        id: noticeBar
        objectName: "noticeBar"
        readonly property TPEditorNotice notice: page.controller.notice
        visible: notice.shown
        anchors { left: parent.left; right: parent.right; top: findBar.bottom }
        height: visible ? noticeColumn.implicitHeight + 12 : 0
        color: Theme.barBackground
        Column {
            id: noticeColumn
            anchors { left: parent.left; right: parent.right; verticalCenter: parent.verticalCenter }
            anchors { leftMargin: 10; rightMargin: 10 }
            spacing: 4
            Label {
                objectName: "noticeText"
                width: parent.width
                wrapMode: Text.Wrap
                text: noticeBar.notice.text
                color: Theme.label
                font.pixelSize: 14
                Accessible.name: text
            }
            Row {
                spacing: 8
                Repeater {
                    model: noticeBar.notice.actions
                    ToolTextButton {
                        required property var modelData
                        objectName: "notice_" + modelData.id
                        text: modelData.title
                        onClicked: noticeBar.notice.trigger(modelData.id)
                    }
                }
            }
        }
        Rectangle {
            anchors { left: parent.left; right: parent.right; bottom: parent.bottom }
            height: 0.5
            color: Theme.separator
        }
    }

    Rectangle {
        id: gutterBackground
        anchors { left: parent.left; top: noticeBar.bottom; bottom: messageBar.top }
        width: gutter.implicitWidth
        color: Theme.gutterBackground
    }

    TPLineGutter {
        id: gutter
        objectName: "gutter"
        anchors.fill: gutterBackground
        textItem: editor
        contentY: flick.contentY
        textTopPadding: editor.topPadding
        errorLine: page.code.syntaxErrorLine
        font: editor.font
        numberColor: Theme.gutterNumber
        currentNumberColor: Theme.label
        errorColor: Theme.destructive
        warningLines: page.code.lint.lines
        warningColor: Theme.warning
        Accessible.name: page.texts.editor_line_numbers
    }

    Flickable {
        id: flick
        objectName: "editorFlickable"
        anchors { left: gutterBackground.right; right: parent.right; top: noticeBar.bottom; bottom: messageBar.top }
        clip: true
        contentHeight: editor.height
        // Unwrapped, long lines run past the text item's width and the content scrolls sideways.
        contentWidth: page.controller.wrap
                      ? width : Math.max(editor.contentWidth + editor.leftPadding + editor.rightPadding, width)
        boundsBehavior: Flickable.StopAtBounds
        // A panel opening or closing above moves the text's top edge: no row is left cut
        // there.
        onYChanged: contentY = page.code.wholeRowContentY(contentY, editor.topPadding)
        ScrollBar.vertical: ScrollBar {
            bottomPadding: page.controller.bottomInset
        }

        // Puts a line in the middle of the text's area, as far as the text lets it.
        function centreOn(r) {
            const centred = r.y + r.height / 2 - height / 2
            contentY = Math.max(0, Math.min(centred, contentHeight - height))
        }

        function ensureVisible(r) {
            if (contentX >= r.x)
                contentX = r.x
            else if (contentX + width <= r.x + r.width)
                contentX = r.x + r.width - width
            if (contentY >= r.y)
                contentY = r.y
            else if (contentY + height <= r.y + r.height + editor.bottomPadding)
                contentY = r.y + r.height + editor.bottomPadding - height
        }

        Rectangle {
            objectName: "currentLine"
            y: editor.cursorRectangle.y
            width: flick.contentWidth
            height: editor.cursorRectangle.height
            color: Theme.currentLine
            visible: editor.activeFocus
        }

        // Where no on-screen keyboard is, the completion candidates show at the cursor: the
        // current one marked, a tap takes one.
        Rectangle {
            id: completionList
            objectName: "completionList"
            readonly property TPCompleter completer: page.code.completer
            visible: page.controller.completionListShown
            x: Math.max(0, Math.min(editor.cursorRectangle.x, flick.contentWidth - width))
            // Below the line typed on, or above it where the text's area ends first.
            readonly property real below: editor.cursorRectangle.y + editor.cursorRectangle.height + 2
            y: below + height <= flick.contentY + flick.height || editor.cursorRectangle.y - height - 2 < flick.contentY
               ? below : editor.cursorRectangle.y - height - 2
            z: 3
            width: Math.min(320, flick.width)
            height: completionColumn.height
            radius: 8
            color: Theme.alertBackground
            border.color: Theme.separator
            border.width: 0.5
            Column {
                id: completionColumn
                width: parent.width
                Repeater {
                    model: completionList.visible ? completionList.completer.rows : null
                    // A light delegate, made anew as a list appears: the text keeps the
                    // keyboard, and a tap takes the candidate.
                    delegate: Rectangle {
                        id: candidate
                        required property int index
                        required property string title
                        required property string detail
                        objectName: "completionItem" + index
                        width: completionColumn.width
                        height: 44
                        radius: 8
                        color: candidate.index === completionList.completer.current ? Theme.highlight : "transparent"
                        Accessible.role: Accessible.Button
                        Accessible.name: detail !== "" ? detail : title
                        Accessible.onPressAction: completionList.completer.accept(index)
                        TapHandler {
                            onTapped: completionList.completer.accept(candidate.index)
                        }
                        Text {
                            x: 10
                            y: candidate.detail !== "" ? 4 : (parent.height - height) / 2
                            width: parent.width - 20
                            text: candidate.title
                            elide: Text.ElideRight
                            font.family: page.controller.font.family
                            font.pixelSize: Theme.bodySize
                            color: Theme.label
                        }
                        Text {
                            x: 10
                            y: 24
                            width: parent.width - 20
                            visible: candidate.detail !== ""
                            text: candidate.detail
                            elide: Text.ElideRight
                            font.family: page.controller.font.family
                            font.pixelSize: 12
                            color: Theme.secondaryLabel
                        }
                    }
                }
            }
        }

        TextEdit {
            id: editor
            objectName: "editor"
            width: flick.width
            height: Math.max(implicitHeight, flick.height)
            textFormat: TextEdit.PlainText
            wrapMode: page.controller.wrap ? TextEdit.WrapAtWordBoundaryOrAnywhere : TextEdit.NoWrap
            font: page.controller.font
            tabStopDistance: page.controller.tabStopDistance
            color: Theme.label
            selectionColor: Theme.selection
            selectedTextColor: Theme.label
            leftPadding: 6
            rightPadding: 6
            topPadding: 8
            bottomPadding: 8 + page.controller.bottomInset + (symbolRow.visible ? symbolRow.height : 0)
            inputMethodHints: TPInputTraits.code
            selectByMouse: true
            persistentSelection: true
            Accessible.name: page.controller.title
            Accessible.role: Accessible.EditableText
            Component.onCompleted: {
                page.code.attachView(editor)
            }
            // Pinching the text makes it larger or smaller, a step at a time.
            PinchHandler {
                objectName: "textPinch"
                target: null
                onActiveChanged: if (active) page.controller.textSize.beginPinch()
                onActiveScaleChanged: if (active) page.controller.textSize.pinch(activeScale)
            }
            onCursorRectangleChanged: flick.ensureVisible(cursorRectangle)
        }
    }

    Rectangle {
        id: messageBar
        objectName: "syntaxMessageBar"
        anchors { left: parent.left; right: parent.right; bottom: lintBar.top }
        height: visible ? message.implicitHeight + 12 : 0
        visible: page.code.syntaxMessage !== ""
        color: Theme.errorBackground
        // A tap on the message takes the cursor to the line it is about.
        Accessible.role: Accessible.Button
        Accessible.name: page.texts.editor_syntax_error + ": " + page.code.syntaxMessage
        TapHandler {
            onTapped: page.code.goToSyntaxError()
        }
        Label {
            id: message
            objectName: "syntaxMessage"
            anchors { left: parent.left; right: parent.right; verticalCenter: parent.verticalCenter }
            anchors { leftMargin: 10; rightMargin: 10 }
            wrapMode: Text.Wrap
            text: page.code.syntaxMessage
            color: Theme.destructive
            font.pixelSize: 13
            Accessible.name: page.texts.editor_syntax_error + ": " + text
        }
    }

    LinesPanel {
        objectName: "lintPanel"
        namePrefix: "lint"
        visible: page.code.lint.listOpen
        anchors { left: parent.left; right: parent.right; bottom: lintBar.top }
        height: visible ? implicitHeight : 0
        z: 2
        model: page.code.lint.rows
        // The messages read as the bar's does.
        titleFamily: lintMessage.font.family
        Accessible.name: page.texts.editor_warnings
        onChosen: index => page.code.goToLintRow(index)
    }

    // The first lint warning (a tap goes to its line), or why the script was not checked,
    // with the number of warnings, whose tap lists them all.
    Rectangle {
        id: lintBar
        objectName: "lintBar"
        anchors { left: parent.left; right: parent.right; bottom: parent.bottom }
        anchors.bottomMargin: page.controller.bottomInset + (symbolRow.visible ? symbolRow.height : 0)
        height: visible ? Math.max(lintMessage.implicitHeight + 12, 44) : 0
        visible: page.code.lint.message !== ""
        color: Theme.warningBackground
        Label {
            id: lintMessage
            objectName: "lintMessage"
            anchors { left: parent.left; right: lintCount.left; verticalCenter: parent.verticalCenter }
            anchors { leftMargin: 10; rightMargin: 4 }
            wrapMode: Text.Wrap
            maximumLineCount: 2
            elide: Text.ElideRight
            text: page.code.lint.message
            color: Theme.warning
            font.pixelSize: 13
            Accessible.role: Accessible.Button
            Accessible.name: text
            TapHandler {
                onTapped: page.code.goToLintMessage()
            }
        }
        ToolTextButton {
            id: lintCount
            objectName: "lintCountButton"
            anchors { right: parent.right; verticalCenter: parent.verticalCenter }
            visible: page.code.lint.count > 0
            width: visible ? implicitWidth : 0
            text: page.code.lint.countText
            checked: page.code.lint.listOpen
            Accessible.name: page.code.lint.countName
            onClicked: page.code.lint.listOpen = !page.code.lint.listOpen
        }
    }

    SymbolKeyRow {
        id: symbolRow
        objectName: "symbolRow"
        visible: page.controller.symbolRowShown
        anchors { left: parent.left; right: parent.right; bottom: parent.bottom }
        anchors.bottomMargin: page.controller.bottomInset
        keys: page.controller.keyRowKeys
        onKeyPressed: key => page.controller.pressKeyRowKey(key)
    }

    Connections {
        target: page.code
        function onCursorMoved() { flick.ensureVisible(editor.cursorRectangle) }
        function onLineJumped() { flick.centreOn(editor.cursorRectangle) }
    }

    // A desktop's or a hardware keyboard's shortcuts, while this page is the one shown.
    // Undo and redo are the code editor's own keys while the text has the keyboard.
    Shortcut {
        sequences: [StandardKey.Save]
        enabled: page.visible
        onActivated: page.controller.onSaveTapped()
    }
    Shortcut {
        sequences: [StandardKey.Find]
        enabled: page.visible
        onActivated: {
            page.code.findOpen = true
            findBar.focusFind()
        }
    }
    Shortcut {
        sequences: [StandardKey.ZoomIn, "Ctrl+="]
        enabled: page.visible
        onActivated: page.controller.textSize.larger()
    }
    Shortcut {
        sequences: [StandardKey.ZoomOut]
        enabled: page.visible
        onActivated: page.controller.textSize.smaller()
    }
    Shortcut {
        sequence: "Ctrl+0"
        enabled: page.visible
        onActivated: page.controller.textSize.reset()
    }
    Shortcut {
        sequence: "Ctrl+G"
        enabled: page.visible
        onActivated: {
            page.code.findOpen = true
            findBar.focusGoToLine()
        }
    }

    Connections {
        target: Qt.inputMethod
        function onKeyboardRectangleChanged() {
            if (page.controller)
                page.controller.followKeyboard(page)
        }
    }
}
