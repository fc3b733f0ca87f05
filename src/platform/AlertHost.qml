import QtQuick
import QtQuick.Controls
import TPCompanion.Platform

// Shows the presenter's current alert or action sheet over the whole window. An alert is
// centred; a sheet sits next to the control it is anchored to, or at the bottom. While one
// is up it holds the keyboard: Return and Escape go to it, as the controller decides, and
// no key or shortcut reaches the screen behind it, which gets its focus back afterwards.
Item {
    id: host
    required property TPPresenter presenter
    readonly property TPAlertController alert: presenter ? presenter.current : null
    readonly property bool popover: presenter !== null && presenter.currentIsPopover
    readonly property bool isSheet: alert !== null && alert.preferredStyle === TPAlertController.ActionSheet
    anchors.fill: parent
    visible: alert !== null
    z: 100

    // What had the keyboard before the first of a run of alerts came up.
    property Item focusBehind: null
    function holds(item) {
        for (let inside = item; inside !== null; inside = inside.parent) {
            if (inside === host)
                return true
        }
        return false
    }
    onAlertChanged: {
        if (alert !== null) {
            if (focusBehind === null && Window.activeFocusItem !== null && !holds(Window.activeFocusItem))
                focusBehind = Window.activeFocusItem
            if (!alert.hasTextField)
                host.forceActiveFocus()
        } else {
            if (focusBehind !== null)
                focusBehind.forceActiveFocus()
            focusBehind = null
        }
    }
    Keys.onShortcutOverride: event => event.accepted = alert !== null
    Keys.onPressed: event => {
        if (alert !== null)
            alert.pressKey(event.key)
        event.accepted = alert !== null
    }
    Keys.onReleased: event => event.accepted = alert !== null

    Binding {
        target: host.presenter
        when: host.presenter !== null
        property: "windowWidth"
        value: host.width
    }

    Rectangle {
        anchors.fill: parent
        color: Theme.scrim
        // The alert or sheet as one modal element; a tap beside a sheet cancels it.
        Accessible.role: Accessible.Dialog
        Accessible.name: host.alert ? host.alert.accessibleName : ""
        MouseArea {
            anchors.fill: parent
            onClicked: host.presenter.tapOutside()
        }
    }

    Rectangle {
        id: alertBox
        objectName: "alertBox"
        visible: host.alert !== null && !host.isSheet
        anchors.centerIn: parent
        width: 270
        height: alertColumn.height
        radius: 14
        color: Theme.alertBackground

        Column {
            id: alertColumn
            width: parent.width
            Item { width: 1; height: 18 }
            Label {
                objectName: "alertTitle"
                width: parent.width - 32
                anchors.horizontalCenter: parent.horizontalCenter
                horizontalAlignment: Text.AlignHCenter
                wrapMode: Text.Wrap
                text: host.alert ? host.alert.title : ""
                visible: text !== ""
                font.pixelSize: 17
                font.weight: Font.DemiBold
                color: Theme.label
            }
            Label {
                objectName: "alertMessage"
                width: parent.width - 32
                anchors.horizontalCenter: parent.horizontalCenter
                horizontalAlignment: Text.AlignHCenter
                wrapMode: Text.Wrap
                topPadding: 4
                text: host.alert ? host.alert.message : ""
                visible: text !== ""
                font.pixelSize: 13
                color: Theme.label
            }
            Item {
                width: parent.width
                height: host.alert && host.alert.hasTextField ? 48 : 0
                visible: height > 0
                ThemedTextField {
                    id: field
                    objectName: "alertTextField"
                    // 44 high (its box is drawn 36 high inside), at the bottom of its 48.
                    anchors { left: parent.left; right: parent.right; leftMargin: 16; rightMargin: 16; bottom: parent.bottom }
                    font.pixelSize: 14
                    placeholderText: host.alert ? host.alert.placeholder : ""
                    inputMethodHints: host.alert ? host.alert.inputMethodHints : 0
                    onTextEdited: if (host.alert) host.alert.text = text
                    onAccepted: if (host.alert) host.alert.submit()
                    Connections {
                        target: host
                        function onAlertChanged() {
                            if (host.alert && host.alert.hasTextField) {
                                field.text = host.alert.text
                                field.forceActiveFocus()
                                field.select(host.alert.selectionStart, host.alert.selectionEnd)
                            }
                        }
                    }
                    Connections {
                        target: host.alert
                        function onTextChanged() {
                            if (field.text !== host.alert.text)
                                field.text = host.alert.text
                        }
                    }
                }
            }
            Item { width: 1; height: 18 }
            Rectangle { width: parent.width; height: 0.5; color: Theme.separator }
            Flow {
                id: buttons
                width: parent.width
                readonly property bool sideBySide: host.alert !== null && host.alert.actions.length === 2
                Repeater {
                    model: host.alert && !host.isSheet ? host.alert.actions : []
                    delegate: AbstractButton {
                        id: actionButton
                        required property int index
                        required property TPAlertAction modelData
                        objectName: "alertAction" + index
                        width: buttons.sideBySide ? buttons.width / 2 : buttons.width
                        height: 44
                        enabled: modelData.enabled
                        onClicked: host.alert.triggerAction(index)
                        Accessible.role: Accessible.Button
                        Accessible.name: modelData.title
                        background: Rectangle {
                            color: actionButton.pressed ? Theme.highlight : "transparent"
                            Rectangle {
                                visible: buttons.sideBySide && actionButton.index === 1
                                anchors { left: parent.left; top: parent.top; bottom: parent.bottom }
                                width: 0.5
                                color: Theme.separator
                            }
                            Rectangle {
                                visible: !buttons.sideBySide && actionButton.index > 0
                                anchors { left: parent.left; right: parent.right; top: parent.top }
                                height: 0.5
                                color: Theme.separator
                            }
                        }
                        contentItem: Text {
                            text: actionButton.modelData.title
                            horizontalAlignment: Text.AlignHCenter
                            verticalAlignment: Text.AlignVCenter
                            font.pixelSize: 17
                            font.weight: actionButton.modelData.style === TPAlertAction.Cancel ? Font.DemiBold : Font.Normal
                            color: !actionButton.enabled ? Theme.secondaryLabel
                                   : actionButton.modelData.style === TPAlertAction.Destructive ? Theme.destructive
                                   : Theme.tint
                        }
                    }
                }
            }
        }
    }

    Column {
        id: sheet
        objectName: "sheet"
        visible: host.isSheet
        readonly property Item anchorItem: host.popover && host.alert ? host.alert.anchor : null
        readonly property point anchorPoint: anchorItem ? anchorItem.mapToItem(host, anchorItem.width, anchorItem.height) : Qt.point(0, 0)
        width: anchorItem ? 260 : host.width - 16
        x: anchorItem ? Math.max(8, Math.min(host.width - width - 8, anchorPoint.x - width)) : 8
        y: anchorItem ? anchorPoint.y + 6 : host.height - height - 8
        spacing: 8

        Rectangle {
            width: parent.width
            height: sheetActions.height
            radius: 14
            color: Theme.barBackground
            clip: true
            Column {
                id: sheetActions
                width: parent.width
                Repeater {
                    model: host.isSheet ? host.alert.actions : []
                    delegate: AbstractButton {
                        id: sheetButton
                        required property int index
                        required property TPAlertAction modelData
                        objectName: "sheetAction" + index
                        visible: modelData.offered
                        width: sheetActions.width
                        height: visible ? 56 : 0
                        enabled: modelData.enabled
                        onClicked: host.alert.triggerAction(index)
                        Accessible.role: Accessible.Button
                        Accessible.name: modelData.title
                        background: Rectangle {
                            color: sheetButton.pressed ? Theme.highlight : "transparent"
                            Rectangle {
                                visible: sheetButton.index > 0
                                anchors { left: parent.left; right: parent.right; top: parent.top }
                                height: 0.5
                                color: Theme.separator
                            }
                        }
                        contentItem: Text {
                            text: sheetButton.modelData.title
                            horizontalAlignment: Text.AlignHCenter
                            verticalAlignment: Text.AlignVCenter
                            font.pixelSize: 19
                            font.weight: sheetButton.modelData.style === TPAlertAction.Cancel ? Font.DemiBold : Font.Normal
                            color: sheetButton.modelData.style === TPAlertAction.Destructive ? Theme.destructive : Theme.tint
                        }
                    }
                }
            }
        }
    }
}
