import QtQuick 2.15
import QtQuick.Templates 2.15 as T
import "../theme"

T.Slider {
    id: control

    implicitWidth: 160
    implicitHeight: 18
    opacity: enabled ? 1 : 0.5

    background: Rectangle {
        x: control.leftPadding
        y: (control.height - height) / 2
        width: control.availableWidth
        height: 4
        radius: 2
        color: Theme.control
    }

    handle: Rectangle {
        x: control.leftPadding + control.visualPosition * (control.availableWidth - width)
        y: (control.height - height) / 2
        implicitWidth: 14
        implicitHeight: 14
        radius: 7
        color: control.pressed ? "white" : control.hovered ? Theme.text : Theme.mark
        border.color: control.visualFocus ? Theme.focus : Theme.line
        border.width: control.visualFocus ? 2 : 1
    }
}
