import QtQuick
import QtQuick.Controls
import TPCompanion

// The script's text in a monospaced editor with typing aids off. The keyboard's frame is
// handed to the controller, which decides the bottom inset.
Item {
    id: page
    required property TPEditorVC controller

    property Component barItems: Row {
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

    ScrollView {
        id: scroller
        anchors.fill: parent
        ScrollBar.vertical.bottomPadding: page.controller ? page.controller.bottomInset : 0

        TextArea {
            id: editor
            objectName: "editor"
            font: page.controller ? page.controller.font : Qt.font({ family: "monospace", pointSize: 14 })
            wrapMode: TextEdit.NoWrap
            bottomPadding: 8 + (page.controller ? page.controller.bottomInset : 0)
            inputMethodHints: Qt.ImhNoAutoUppercase | Qt.ImhNoPredictiveText | Qt.ImhPreferLatin
            selectByMouse: true
            background: null
            onTextChanged: if (page.controller && page.controller.text !== text) page.controller.text = text
            Component.onCompleted: text = page.controller.text
            Connections {
                target: page.controller
                function onTextChanged() {
                    if (editor.text !== page.controller.text)
                        editor.text = page.controller.text
                }
            }
        }
    }

    Connections {
        target: Qt.inputMethod
        function onKeyboardRectangleChanged() {
            if (!page.controller)
                return
            if (!Qt.inputMethod.visible) {
                page.controller.keyboardWillHide()
                return
            }
            const frame = Qt.inputMethod.keyboardRectangle
            const topLeft = page.mapFromItem(null, frame.x, frame.y)
            page.controller.keyboardWillChangeFrame(Qt.rect(topLeft.x, topLeft.y, frame.width, frame.height), page.height)
        }
    }
}
