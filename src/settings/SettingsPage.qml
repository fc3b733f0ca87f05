import QtQuick
import QtQuick.Controls
import TPCompanion.Platform
import TPCompanion.Settings

// The grouped settings table. Each row is drawn by its kind; taps and control changes go
// straight to the controller.
ScreenPage {
    id: page
    required property TPSettingsVC controller

    Rectangle {
        anchors.fill: parent
        color: Theme.groupedBackground
    }

    ListView {
        id: table
        objectName: "settingsTable"
        anchors.fill: parent
        model: page.controller ? page.controller.rows : null
        clip: true
        bottomMargin: 24

        section.property: "sectionTitle"
        section.delegate: Label {
            required property string section
            width: ListView.view.width
            height: 52
            leftPadding: 32 + page.sideInset
            bottomPadding: 6
            verticalAlignment: Text.AlignBottom
            text: section.toUpperCase()
            font.pixelSize: 13
            color: Theme.sectionHeader
        }

        add: Transition { NumberAnimation { property: "opacity"; from: 0; to: 1; duration: 200 } }
        remove: Transition { NumberAnimation { property: "opacity"; to: 0; duration: 200 } }
        displaced: Transition { NumberAnimation { properties: "y"; duration: 200 } }

        delegate: Item {
            id: cellItem
            required property string identifier
            required property int kind
            required property int section
            required property int row
            required property string title
            required property string detail
            required property bool disclosure
            required property bool highlightsOnTap
            required property int rowHeight
            required property bool switchOn
            required property int tag
            required property var segments
            required property int selectedSegment
            required property QtObject cell
            required property string accessibleName
            required property bool previewBelow
            objectName: "setting_" + identifier + "_" + cellItem.row
            width: ListView.view.width
            // The row's own height, and the marker's preview under the last marker row.
            height: rowHeight + (previewBelow ? page.controller.markerPreview.areaHeight : 0)
            // A row that answers a tap is a button named by its title and value; the other
            // rows hold their own controls.
            Accessible.role: highlightsOnTap ? Accessible.Button : Accessible.NoRole
            Accessible.name: accessibleName

            Rectangle {
                anchors { left: parent.left; right: parent.right; top: parent.top
                          leftMargin: 16 + page.sideInset; rightMargin: 16 + page.sideInset }
                height: cellItem.rowHeight
                color: tapArea.pressed && cellItem.highlightsOnTap ? Theme.highlight : Theme.groupedCell
                Rectangle {
                    anchors { left: parent.left; leftMargin: 16; right: parent.right; bottom: parent.bottom }
                    height: 0.5
                    color: Theme.separator
                }
            }
            MouseArea {
                id: tapArea
                anchors { left: parent.left; right: parent.right; top: parent.top
                          leftMargin: page.sideInset; rightMargin: page.sideInset }
                height: cellItem.rowHeight
                enabled: cellItem.highlightsOnTap
                onClicked: page.controller.didSelectRow(cellItem.section, cellItem.row)
            }
            Loader {
                anchors { left: parent.left; right: parent.right; top: parent.top
                          leftMargin: 16 + page.sideInset; rightMargin: 16 + page.sideInset }
                height: cellItem.rowHeight
                sourceComponent: {
                    switch (cellItem.kind) {
                    case TPSettingsRowKind.Swatch: return swatchComponent
                    case TPSettingsRowKind.Slider: return sliderComponent
                    case TPSettingsRowKind.Switch: return switchComponent
                    case TPSettingsRowKind.Segments: return segmentsComponent
                    default: return valueComponent
                    }
                }
            }

            // The touch marker as the engine draws it: its colour, size and opacity.
            Rectangle {
                objectName: "markerPreviewArea"
                readonly property TPMarkerPreview preview: page.controller.markerPreview
                visible: cellItem.previewBelow
                anchors { left: parent.left; right: parent.right; bottom: parent.bottom
                          leftMargin: 16 + page.sideInset; rightMargin: 16 + page.sideInset }
                height: visible ? preview.areaHeight : 0
                color: Theme.groupedCell
                Accessible.role: Accessible.Graphic
                Accessible.name: preview.accessibleName
                Rectangle {
                    objectName: "markerPreview"
                    anchors.centerIn: parent
                    width: parent.preview.diameter
                    height: width
                    radius: width / 2
                    color: parent.preview.color
                    opacity: parent.preview.opacity
                }
                Rectangle {
                    anchors { left: parent.left; leftMargin: 16; right: parent.right; bottom: parent.bottom }
                    height: 0.5
                    color: Theme.separator
                }
            }

            Component {
                id: valueComponent
                Item {
                    Label {
                        anchors { left: parent.left; leftMargin: 16; verticalCenter: parent.verticalCenter }
                        text: cellItem.title
                        font.pixelSize: Theme.bodySize
                        color: Theme.label
                    }
                    Label {
                        objectName: "detail"
                        anchors { right: chevron.left; rightMargin: 6; verticalCenter: parent.verticalCenter }
                        text: cellItem.detail
                        font.pixelSize: Theme.bodySize
                        color: Theme.secondaryLabel
                    }
                    Text {
                        id: chevron
                        anchors { right: parent.right; rightMargin: cellItem.disclosure ? 14 : 10; verticalCenter: parent.verticalCenter }
                        text: cellItem.disclosure ? "›" : ""
                        font.pixelSize: 24
                        color: Theme.chevron
                    }
                }
            }
            Component {
                id: switchComponent
                Item {
                    Label {
                        anchors { left: parent.left; leftMargin: 16; right: toggle.left; rightMargin: 8
                                  verticalCenter: parent.verticalCenter }
                        text: cellItem.title
                        wrapMode: Text.Wrap
                        font.pixelSize: Theme.bodySize
                        color: Theme.label
                    }
                    ToggleSwitch {
                        id: toggle
                        objectName: "switch" + cellItem.tag
                        anchors { right: parent.right; rightMargin: 8; verticalCenter: parent.verticalCenter }
                        checked: cellItem.switchOn
                        Accessible.name: cellItem.title
                        onToggled: page.controller.onSwitchChanged(cellItem.tag, checked)
                    }
                }
            }
            Component {
                id: segmentsComponent
                Item {
                    Label {
                        anchors { left: parent.left; leftMargin: 16; right: segments.left; rightMargin: 8
                                  verticalCenter: parent.verticalCenter }
                        text: cellItem.title
                        elide: Text.ElideRight
                        font.pixelSize: Theme.bodySize
                        color: Theme.label
                    }
                    SegmentedControl {
                        id: segments
                        objectName: "segments_" + cellItem.identifier
                        anchors { right: parent.right; rightMargin: 12; verticalCenter: parent.verticalCenter }
                        segments: cellItem.segments
                        currentIndex: cellItem.selectedSegment
                        onActivated: index => page.controller.onSegmentChanged(cellItem.section, index)
                    }
                }
            }
            Component {
                id: swatchComponent
                SwatchRow { cell: cellItem.cell }
            }
            Component {
                id: sliderComponent
                SliderRow { cell: cellItem.cell }
            }
        }
    }
}
