import QtQuick 2.15
import QtQuick.Templates 2.15 as T
import "../theme"

T.Switch {
    id: control

    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: Theme.controlHeight
    font.pixelSize: Theme.textSize

    indicator: Rectangle {
        x: control.leftPadding
        y: (control.height - height) / 2
        implicitWidth: 32
        implicitHeight: 18
        radius: 9
        opacity: control.enabled ? 1 : 0.5
        color: control.checked ? Theme.mark : Theme.control
        border.color: control.visualFocus ? Theme.focus : Theme.edge
        border.width: control.visualFocus ? 2 : 1

        Rectangle {
            x: control.visualPosition * (parent.width - width - 6) + 3
            anchors.verticalCenter: parent.verticalCenter
            width: 12
            height: 12
            radius: 6
            color: control.checked ? Theme.line : Theme.mark
        }
    }

    contentItem: Text {
        leftPadding: control.indicator.width + (control.text === "" ? 0 : Theme.spacing)
        text: control.text
        font: control.font
        color: control.enabled ? Theme.text : Theme.disabled
        verticalAlignment: Text.AlignVCenter
    }
}
