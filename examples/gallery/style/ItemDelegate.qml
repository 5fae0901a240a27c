import QtQuick 2.15
import QtQuick.Templates 2.15 as T
import "../theme"

T.ItemDelegate {
    id: control

    implicitHeight: Theme.controlHeight
    leftPadding: 10
    rightPadding: 10
    font.pixelSize: Theme.textSize

    contentItem: Text {
        text: control.text
        font: control.font
        color: control.enabled ? Theme.text : Theme.disabled
        verticalAlignment: Text.AlignVCenter
        elide: Text.ElideRight
    }

    background: Rectangle {
        color: control.highlighted ? Theme.hovered : control.hovered ? Theme.control : "transparent"
    }
}
