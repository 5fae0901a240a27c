import QtQuick 2.15
import QtQuick.Templates 2.15 as T
import "../theme"

T.Button {
    id: control

    implicitWidth: Math.max(implicitContentWidth + leftPadding + rightPadding, 64)
    implicitHeight: Theme.controlHeight
    leftPadding: 12
    rightPadding: 12
    font.pixelSize: Theme.textSize

    contentItem: Text {
        text: control.text
        font: control.font
        color: !control.enabled ? Theme.disabled : control.checked ? Theme.line : Theme.text
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
    }

    background: Rectangle {
        radius: Theme.radius
        color: control.checked ? Theme.mark
                               : control.down || control.hovered ? Theme.hovered : Theme.control
        border.width: control.visualFocus ? 2 : 0
        border.color: Theme.focus
    }
}
