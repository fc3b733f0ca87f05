import QtQuick
import QtQuick.Controls
import TPCompanion.Platform
import TPCompanion.Settings

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
        // Under the title, as tall as a finger needs.
        anchors { left: parent.left; right: parent.right; leftMargin: 16; rightMargin: 16
                  bottom: parent.bottom; bottomMargin: 2 }
        height: 44
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
        // The theme's colours, so that the filled and the empty part both read in either
        // appearance: the filled part in the tint, the empty part as a switch that is off.
        background: Rectangle {
            objectName: "sliderTrack"
            x: slider.leftPadding
            y: slider.topPadding + slider.availableHeight / 2 - height / 2
            width: slider.availableWidth
            height: 4
            radius: 2
            color: Theme.switchOff
            Rectangle {
                objectName: "sliderFill"
                width: slider.visualPosition * parent.width
                height: parent.height
                radius: 2
                color: Theme.tint
            }
        }
        handle: Rectangle {
            objectName: "sliderHandle"
            x: slider.leftPadding + slider.visualPosition * (slider.availableWidth - width)
            y: slider.topPadding + slider.availableHeight / 2 - height / 2
            width: 28
            height: 28
            radius: 14
            color: Theme.switchKnob
            border.color: Theme.switchKnobBorder
        }
    }
}
