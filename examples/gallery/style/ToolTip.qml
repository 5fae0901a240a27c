import QtQuick 2.15
import QtQuick.Templates 2.15 as T
import "../theme"

T.ToolTip {
    id: control

    x: parent ? (parent.width - width) / 2 : 0
    y: parent ? parent.height + 4 : 0
    implicitWidth: contentWidth + leftPadding + rightPadding
    implicitHeight: contentHeight + topPadding + bottomPadding
    margins: 6
    padding: 6
    delay: 600
    closePolicy: T.Popup.CloseOnEscape | T.Popup.CloseOnPressOutsideParent
                 | T.Popup.CloseOnReleaseOutsideParent

    contentItem: Text {
        text: control.text
        font.pixelSize: Theme.smallSize
        color: Theme.text
    }

    background: Rectangle {
        radius: Theme.radius
        color: Theme.line
        border.color: Theme.edge
    }
}
