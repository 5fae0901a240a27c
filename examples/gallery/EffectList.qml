import QtQuick 2.15
import QtQuick.Controls 2.15
import "theme"

// Chooses the effect, by mouse or by the arrow keys.
Rectangle {
    id: root

    property alias entries: view.model
    property alias currentIndex: view.currentIndex

    color: Theme.panel

    ListView {
        id: view

        objectName: "effects"
        anchors.fill: parent
        anchors.topMargin: Theme.spacing
        anchors.bottomMargin: help.height
        clip: true
        focus: true
        activeFocusOnTab: true
        currentIndex: 0
        boundsBehavior: Flickable.StopAtBounds

        delegate: ItemDelegate {
            required property int index
            required property var modelData

            objectName: "effect." + index
            width: ListView.view.width
            height: 34
            leftPadding: Theme.margin
            text: modelData.title
            highlighted: ListView.isCurrentItem
            focusPolicy: Qt.NoFocus
            onClicked: {
                view.currentIndex = index
                view.forceActiveFocus()
            }

            Rectangle {
                width: 3
                height: parent.height
                visible: parent.highlighted
                color: view.activeFocus ? Theme.focus : Theme.mark
            }
        }
    }

    Text {
        id: help

        anchors.bottom: parent.bottom
        width: parent.width
        padding: Theme.margin
        text: "A double click on a slider, or Delete, takes it to its neutral value, or else to its "
              + "default: the tick."
        font.pixelSize: Theme.smallSize
        color: Theme.faint
        wrapMode: Text.WordWrap
    }
}
