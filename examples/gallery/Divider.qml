import QtQuick 2.15
import "theme"

// A line over its area, to be dragged or moved by the arrow keys; a double click centres it.
FocusScope {
    id: root

    property real position: 0.5
    readonly property int place: Math.round(position * width)

    activeFocusOnTab: true
    Keys.onLeftPressed: move(position - 0.02)
    Keys.onRightPressed: move(position + 0.02)

    function move(to) {
        position = Math.max(0, Math.min(1, to))
    }

    Rectangle {
        x: root.place - width / 2
        width: 2
        height: parent.height
        color: "white"
        opacity: 0.8
    }

    Rectangle {
        x: root.place - width / 2
        y: (root.height - height) / 2
        width: 28
        height: 28
        radius: 14
        color: handle.pressed || handle.containsMouse ? "white" : Theme.mark
        border.width: 2
        border.color: root.activeFocus ? Theme.focus : Theme.line

        Text {
            anchors.centerIn: parent
            text: "\u25c2\u25b8"
            font.pixelSize: Theme.textSize
            color: Theme.line
        }
    }

    MouseArea {
        id: handle

        x: root.place - width / 2
        width: 28
        height: parent.height
        hoverEnabled: true
        cursorShape: Qt.SplitHCursor
        onPressed: root.forceActiveFocus()
        onPositionChanged: function(mouse) {
            if (pressed) {
                root.move(mapToItem(root, mouse.x, 0).x / root.width)
            }
        }
        onDoubleClicked: root.position = 0.5
    }
}
