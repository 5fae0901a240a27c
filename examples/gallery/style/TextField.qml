import QtQuick 2.15
import QtQuick.Templates 2.15 as T
import "../theme"

T.TextField {
    id: control

    implicitWidth: 120
    implicitHeight: Theme.controlHeight
    leftPadding: 8
    rightPadding: 8
    font.pixelSize: Theme.textSize
    color: enabled ? Theme.text : Theme.disabled
    selectionColor: Theme.focus
    selectedTextColor: Theme.line
    placeholderTextColor: Theme.disabled
    verticalAlignment: TextInput.AlignVCenter
    selectByMouse: true

    background: Rectangle {
        radius: Theme.radius
        color: Theme.line
        border.color: control.activeFocus ? Theme.focus : Theme.edge
    }

    Text {
        x: control.leftPadding
        width: control.availableWidth
        height: control.height
        visible: control.length === 0 && !control.preeditText
        text: control.placeholderText
        font: control.font
        color: control.placeholderTextColor
        verticalAlignment: Text.AlignVCenter
        elide: Text.ElideRight
    }
}
