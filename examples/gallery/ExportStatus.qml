import QtQuick 2.15
import QtQuick.Controls 2.15
import "theme"

// How the exports go: what runs or went wrong, and below it the last result, to be opened.
Column {
    id: root

    required property Exports exports
    readonly property bool busy: exports.progress !== ""

    spacing: 2

    Item {
        width: parent.width
        height: message.height
        visible: message.text !== ""

        BusyIndicator {
            id: indicator

            objectName: "export.busy"
            anchors.right: message.left
            anchors.rightMargin: Theme.spacing
            anchors.verticalCenter: parent.verticalCenter
            visible: root.busy
            running: root.busy && !root.exports.silent
        }

        Text {
            id: message

            objectName: "export.message"
            anchors.right: parent.right
            width: Math.min(implicitWidth, parent.width - indicator.width - Theme.spacing)
            text: root.busy ? root.exports.progress : root.exports.failure
            font.pixelSize: Theme.textSize
            color: root.busy && !root.exports.silent ? Theme.text : Theme.warning
            elide: Text.ElideMiddle
        }
    }

    Item {
        width: parent.width
        height: link.height
        visible: link.text !== ""

        Text {
            id: label

            anchors.right: link.left
            text: "Exported "
            font.pixelSize: Theme.textSize
            color: Theme.faint
        }

        Link {
            id: link

            objectName: "export.result"
            anchors.right: parent.right
            width: Math.min(implicitWidth, parent.width - label.width)
            text: root.exports.nameOf(root.exports.result)
            address: root.exports.result

            ToolTip.visible: hovered
            ToolTip.text: `Opens the picture in ${root.exports.folder.path}`
        }
    }
}
