import QtQuick
import TPCompanion

// Eight 32-point round swatches, evenly spaced between 16-point margins.
Item {
    id: swatchRow
    required property TPSwatchCell cell

    Row {
        id: swatches
        anchors { left: parent.left; leftMargin: 16; verticalCenter: parent.verticalCenter }
        readonly property int count: swatchRow.cell ? swatchRow.cell.buttons.length : 0
        spacing: count > 1 ? Math.max(0, (swatchRow.width - 32 - count * 32) / (count - 1)) : 0
        Repeater {
            model: swatchRow.cell ? swatchRow.cell.buttons : []
            delegate: Rectangle {
                required property int index
                required property var modelData
                objectName: "swatch" + index
                width: 32
                height: 32
                radius: 16
                color: modelData.color
                border.width: modelData.borderWidth
                border.color: modelData.borderColor
                Accessible.role: Accessible.RadioButton
                Accessible.name: modelData.accessibleName
                Accessible.checkable: true
                Accessible.checked: modelData.selected
                MouseArea {
                    anchors.fill: parent
                    onClicked: swatchRow.cell.onSwatchTapped(parent.index)
                }
            }
        }
    }
}
