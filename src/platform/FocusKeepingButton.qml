import QtQuick
import QtQuick.Controls
import TPCompanion.Platform

// A button that acts without taking the focus from the text being typed, so that the
// keyboard stays up.
AbstractButton {
    focusPolicy: TPInputTraits.keepsFocusAway
}
