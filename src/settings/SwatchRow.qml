import QtQuick
import TPCompanion.Settings

// Eight 32-point round swatches, evenly spaced between 16-point margins. The row is cut into
// eight equal tiles, one per swatch, so that each answers a finger in at least 44x44 points
// without reaching into its neighbour's.
Item {
    id: swatchRow
    required property TPSwatchCell cell
    readonly property int count: cell ? cell.buttons.length : 0

    Row {
        id: swatches
        anchors { left: parent.left; leftMargin: 16; verticalCenter: parent.verticalCenter }
        spacing: swatchRow.count > 1 ? Math.max(0, (swatchRow.width - 32 - swatchRow.count * 32) / (swatchRow.count - 1)) : 0
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
                // The selected swatch carries a check mark, which no ring can be taken for.
                Text {
                    objectName: "swatchCheck" + parent.index
                    anchors.centerIn: parent
                    visible: parent.modelData.selected
                    text: "✓"
                    font.pixelSize: 20
                    font.bold: true
                    color: parent.modelData.checkColor
                }
                Rectangle {
                    objectName: "swatchOutline" + parent.index
                    anchors { fill: parent; margins: -3 }
                    radius: width / 2
                    color: "transparent"
                    border.width: 1.5
                    border.color: parent.modelData.outlineColor
                }
            }
        }
    }
    Row {
        anchors.fill: parent
        Repeater {
            model: swatchRow.count
            delegate: MouseArea {
                required property int index
                readonly property var swatch: swatchRow.cell.buttons[index]
                objectName: "swatchTap" + index
                width: swatchRow.width / swatchRow.count
                height: swatchRow.height
                Accessible.role: Accessible.RadioButton
                Accessible.name: swatch.accessibleName
                Accessible.checkable: true
                Accessible.checked: swatch.selected
                onClicked: swatchRow.cell.onSwatchTapped(index)
            }
        }
    }
}
