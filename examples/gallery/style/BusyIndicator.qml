import QtQuick 2.15
import QtQuick.Templates 2.15 as T
import "../theme"

// A ring of dots, the brightest of which goes round.
T.BusyIndicator {
    id: control

    implicitWidth: 16
    implicitHeight: 16

    contentItem: Item {
        opacity: control.running ? 1 : 0.4

        Repeater {
            model: 8

            Rectangle {
                required property int index
                readonly property real angle: index / 8 * 2 * Math.PI

                x: (parent.width - width) / 2 * (1 + Math.cos(angle))
                y: (parent.height - height) / 2 * (1 + Math.sin(angle))
                width: 3
                height: 3
                radius: 1.5
                color: Theme.text
                opacity: (index + 1) / 8
            }
        }

        RotationAnimator on rotation {
            running: control.running && control.visible
            from: 0
            to: 360
            duration: 1000
            loops: Animation.Infinite
        }
    }
}
