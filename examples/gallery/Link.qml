import QtQuick 2.15
import QtQuick.Controls 2.15
import "theme"

// A file or page to open in the application that the system has for it.
AbstractButton {
    id: root

    property url address

    implicitWidth: Math.ceil(implicitContentWidth)
    implicitHeight: implicitContentHeight
    onClicked: Qt.openUrlExternally(address)

    contentItem: Text {
        text: root.text
        font.pixelSize: Theme.textSize
        font.underline: root.hovered || root.visualFocus
        color: Theme.focus
        elide: Text.ElideMiddle
    }

    background: Rectangle {
        anchors.fill: parent
        anchors.margins: -3
        color: "transparent"
        radius: Theme.radius
        border.width: root.visualFocus ? 2 : 0
        border.color: Theme.focus
    }

    HoverHandler { cursorShape: Qt.PointingHandCursor }
}
