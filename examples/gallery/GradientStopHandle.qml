import QtQuick 2.15
import Korvel.ImageFx 1.0
import "theme"

// A stop as a dot; with the keyboard on it arrows move it and Delete removes it.
Rectangle {
    id: root

    property AlphaGradientStop stop

    signal removed()

    height: width
    radius: width / 2
    color: activeFocus ? "white" : Theme.mark
    border.width: 2
    border.color: activeFocus ? Theme.focus : Theme.line
    activeFocusOnTab: true

    Keys.onLeftPressed: stop.location -= 0.01
    Keys.onRightPressed: stop.location += 0.01
    Keys.onUpPressed: stop.value += 0.01
    Keys.onDownPressed: stop.value -= 0.01
    Keys.onDeletePressed: removed()

    Text {
        // Beside the dot, on the side where there is room.
        readonly property bool flipped: root.stop.location > 0.8

        x: flipped ? -width - 6 : parent.width + 6
        anchors.verticalCenter: parent.verticalCenter
        visible: root.activeFocus
        text: `${root.stop.location.toFixed(2)} \u2192 ${root.stop.value.toFixed(2)}`
        font.pixelSize: Theme.smallSize
        color: "white"
        style: Text.Outline
        styleColor: Theme.line
    }
}
