import QtQuick
import QtQuick.Controls

// The style's busy indicator, running. Kept in a file of its own so that an
// ActivityIndicator names it only by address: the style's indicator and its module are then
// read when a spinner first runs, not with every page that might show one.
BusyIndicator {
    running: true
}
