import QtQuick 2.15
import QtQuick.Controls 2.15
import "theme"

// A photograph to choose, as a small picture.
AbstractButton {
    id: root

    property alias source: picture.source

    implicitWidth: 60
    implicitHeight: 44
    padding: 3

    ToolTip.visible: hovered
    ToolTip.text: text

    contentItem: Image {
        id: picture

        sourceSize.width: 160
        fillMode: Image.PreserveAspectCrop
        mipmap: true
    }

    background: Rectangle {
        radius: Theme.radius
        color: root.hovered ? Theme.hovered : "transparent"
        border.width: root.checked || root.visualFocus ? 2 : 0
        border.color: root.visualFocus ? Theme.focus : Theme.mark
    }
}
