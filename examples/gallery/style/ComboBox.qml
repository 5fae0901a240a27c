import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Window 2.15
import QtQuick.Templates 2.15 as T
import "../theme"

T.ComboBox {
    id: control

    implicitWidth: 160
    implicitHeight: Theme.controlHeight
    leftPadding: 10
    rightPadding: 28
    font.pixelSize: Theme.textSize

    delegate: ItemDelegate {
        required property int index
        required property var modelData

        width: ListView.view.width
        text: control.textRole ? modelData[control.textRole] : modelData
        font.bold: control.currentIndex === index
        highlighted: control.highlightedIndex === index
    }

    indicator: Text {
        x: control.width - width - 10
        y: (control.height - height) / 2
        text: "\u25be"
        font.pixelSize: Theme.textSize
        color: Theme.faint
    }

    contentItem: Text {
        text: control.displayText
        font: control.font
        color: control.enabled ? Theme.text : Theme.disabled
        verticalAlignment: Text.AlignVCenter
        elide: Text.ElideRight
    }

    background: Rectangle {
        radius: Theme.radius
        color: control.hovered || control.down ? Theme.hovered : Theme.control
        border.width: control.visualFocus ? 2 : 0
        border.color: Theme.focus
    }

    popup: T.Popup {
        y: control.height
        width: control.width
        height: Math.min(contentItem.implicitHeight + 2, control.Window.height - 16)
        margins: 8
        padding: 1

        contentItem: ListView {
            clip: true
            implicitHeight: contentHeight
            model: control.delegateModel
            currentIndex: control.highlightedIndex
        }

        background: Rectangle {
            color: Theme.raised
            border.color: Theme.edge
        }
    }
}
