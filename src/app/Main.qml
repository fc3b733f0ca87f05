import QtQuick
import QtQuick.Controls

ApplicationWindow {
    width: 390
    height: 844
    visible: true
    title: "TP Companion"
}
