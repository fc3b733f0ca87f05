import QtQuick.Controls
import TPCompanion.Platform

// The style's busy indicator, running: what an ActivityIndicator shows while it runs. A
// file of its own, read when an indicator first runs, and on the loader thread: the style
// reads a module for it that nothing else on the first screen needs.
BusyIndicator {
    running: true
    // The style's padding leaves a 12-point ring in a bar's 24-point place: the ring fills
    // its place instead, as large as the glyph it stands in for.
    padding: 2
    // The style draws in its own dark grey, which all but vanishes on the dark bar.
    palette.dark: Theme.activity
}
