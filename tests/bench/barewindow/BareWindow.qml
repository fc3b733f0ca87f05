import QtQuick
import QtQuick.Controls

// What the start-up benchmark compares the app with: a window in the same style and size
// with a tool bar and a five-row list, and nothing else.
ApplicationWindow {
    width: 390
    height: 844
    visible: true
    header: ToolBar {
        Label {
            anchors.centerIn: parent
            text: "Scripts"
            font.bold: true
        }
    }
    ListView {
        anchors.fill: parent
        model: 5
        delegate: ItemDelegate {
            required property int index
            width: ListView.view.width
            text: "script" + index + ".lua"
        }
    }
}
