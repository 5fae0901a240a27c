import QtQuick 2.15
import QtQuick.Controls 2.15

// A slider that a double click, or the Delete key, takes back.
Slider {
    id: root

    // Colours along the slider; without any, a bar runs from `origin` to the handle.
    property var colors: []
    property real origin: from
    // Where the handle goes back to, marked by a tick.
    property real resting: origin

    signal resetRequested()

    stepSize: 0.01
    Keys.onDeletePressed: resetRequested()

    background: Groove {
        slider: root
        colors: root.colors
        origin: root.origin
        resting: root.resting
    }

    // Later, since the slider moves once more when the button is released.
    TapHandler { onDoubleTapped: Qt.callLater(root.resetRequested) }
}
