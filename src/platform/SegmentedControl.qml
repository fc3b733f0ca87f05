import QtQuick
import TPCompanion.Platform

// A row of mutually exclusive segments; `activated` reports a segment the user chose.
Rectangle {
    id: control
    property var segments: []
    property int currentIndex: 0
    signal activated(int index)

    implicitWidth: row.implicitWidth + 4
    implicitHeight: 32
    radius: 8
    color: Theme.segmentsBackground

    Row {
        id: row
        anchors.centerIn: parent
        Repeater {
            model: control.segments
            delegate: Rectangle {
                required property int index
                required property string modelData
                objectName: "segment" + index
                Accessible.role: Accessible.RadioButton
                Accessible.name: modelData
                Accessible.checkable: true
                Accessible.checked: index === control.currentIndex
                width: Math.max(56, segmentLabel.implicitWidth + 20)
                height: 28
                radius: 7
                color: index === control.currentIndex ? Theme.selectedSegment : "transparent"
                border.width: index === control.currentIndex ? 0.5 : 0
                border.color: Theme.segmentBorder
                Text {
                    id: segmentLabel
                    anchors.centerIn: parent
                    text: parent.modelData
                    font.pixelSize: 13
                    font.weight: parent.index === control.currentIndex ? Font.DemiBold : Font.Normal
                    color: Theme.label
                }
                MouseArea {
                    // As tall as a finger needs, above and below the drawn segment.
                    anchors { fill: parent; topMargin: -8; bottomMargin: -8 }
                    onClicked: {
                        if (parent.index !== control.currentIndex) {
                            control.currentIndex = parent.index
                            control.activated(parent.index)
                        }
                    }
                }
            }
        }
    }
}
