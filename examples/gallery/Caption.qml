import QtQuick 2.15
import "theme"

// A word on the picture, readable on dark and on light.
Text {
    padding: 6
    leftPadding: 10
    rightPadding: 10
    font.pixelSize: Theme.smallSize
    color: "white"

    Rectangle {
        z: -1
        anchors.fill: parent
        color: "black"
        opacity: 0.5
    }
}
