import QtQuick
import QtQuick.Controls
import TPCompanion

// A title, a read-out that follows the finger, and a slider that reports once on release.
Item {
    id: sliderRow
    required property TPSliderCell cell

    Label {
        id: title
        anchors { left: parent.left; leftMargin: 16; top: parent.top; topMargin: 10 }
        text: sliderRow.cell ? sliderRow.cell.title : ""
        font.pixelSize: 17
        color: Theme.label
    }
    Label {
        objectName: "sliderValue"
        anchors { right: parent.right; rightMargin: 16; top: parent.top; topMargin: 10 }
        text: sliderRow.cell ? sliderRow.cell.valueText : ""
        font.pixelSize: 15
        color: Theme.secondaryLabel
        horizontalAlignment: Text.AlignRight
    }
    Slider {
        id: slider
        objectName: "slider"
        Accessible.role: Accessible.Slider
        Accessible.name: sliderRow.cell ? sliderRow.cell.title : ""
        anchors { left: parent.left; right: parent.right; leftMargin: 16; rightMargin: 16
                  top: title.bottom; topMargin: 4; bottom: parent.bottom; bottomMargin: 8 }
        from: sliderRow.cell ? sliderRow.cell.minimum : 0
        to: sliderRow.cell ? sliderRow.cell.maximum : 1
        value: sliderRow.cell ? sliderRow.cell.value : 0
        live: true
        onMoved: sliderRow.cell.onSliderDragging(value)
        onPressedChanged: {
            if (!pressed) {
                sliderRow.cell.onSliderReleased(value)
                value = Qt.binding(() => sliderRow.cell ? sliderRow.cell.value : 0)
            }
        }
    }
}
