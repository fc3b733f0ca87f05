import QtQuick
import QtQuick.Controls
import TPCompanion.Platform

// An on/off switch drawn like the phone's: green when on.
Switch {
    id: control
    // The drawn switch is 51x31; a finger may land anywhere in 51x44.
    implicitWidth: 51
    implicitHeight: 44
    padding: 0
    Accessible.role: Accessible.CheckBox
    Accessible.checkable: true
    Accessible.checked: checked
    indicator: Rectangle {
        y: (control.height - height) / 2
        width: 51
        height: 31
        radius: 15.5
        color: control.checked ? Theme.switchOn : Theme.switchOff
        Behavior on color { ColorAnimation { duration: 150 } }
        Rectangle {
            width: 27
            height: 27
            radius: 13.5
            y: 2
            x: control.checked ? parent.width - width - 2 : 2
            color: Theme.switchKnob
            border.width: 0.5
            border.color: Theme.switchKnobBorder
            Behavior on x { NumberAnimation { duration: 150 } }
        }
    }
    contentItem: Item {}
}
