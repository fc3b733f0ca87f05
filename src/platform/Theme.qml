pragma Singleton
import QtQuick

// The app's colours and metrics, close to the phone platform's own.
QtObject {
    readonly property color background: "#FFFFFF"
    readonly property color groupedBackground: "#F2F2F7"
    readonly property color label: "#000000"
    readonly property color secondaryLabel: "#993C3C43"
    readonly property color separator: "#4A3C3C43"
    readonly property color tint: "#007AFF"
    readonly property color destructive: "#FF3B30"
    readonly property color barBackground: "#F7F7F7"
    readonly property color highlight: "#D1D1D6"
    // The code editor
    readonly property color currentLine: "#F2F6FC"
    readonly property color gutterBackground: "#F7F7F7"
    readonly property color gutterNumber: "#8E8E93"
    readonly property color errorBackground: "#FFECEB"
    readonly property color selection: "#B3D7FF"
    readonly property var syntaxColors: ({
        keyword: "#AD3DA4",
        string: "#D12F1B",
        comment: "#707F8C",
        number: "#272AD8",
        function: "#3E8087"
    })
    readonly property int barHeight: 44
    readonly property int tabBarHeight: 56
    readonly property int bodySize: 17
}
