import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import "theme"

// The photographs on the left, what is done to the picture as a whole on the right.
Rectangle {
    id: root

    required property Exports exports
    property url photograph: photographs[0].source
    readonly property string photographName:
        photographs.find(each => photograph == each.source).name
    readonly property alias comparing: compare.checked
    readonly property var photographs: [
        { name: "mountains", source: "qrc:/gallery/photographs/mountains.jpg" },
        { name: "room", source: "qrc:/gallery/photographs/room.jpg" },
        { name: "friends", source: "qrc:/gallery/photographs/friends.jpg" },
    ]

    signal resetRequested()
    signal exportRequested()

    implicitHeight: 60
    color: Theme.panel

    Rectangle {
        anchors.bottom: parent.bottom
        width: parent.width
        height: 1
        color: Theme.line
    }

    RowLayout {
        anchors.fill: parent
        anchors.leftMargin: Theme.margin
        anchors.rightMargin: Theme.margin
        spacing: Theme.spacing

        Text {
            Layout.preferredWidth: 200 - Theme.margin
            text: "Effect gallery"
            font.pixelSize: Theme.titleSize
            color: Theme.text
        }

        Repeater {
            model: root.photographs

            PhotographButton {
                required property var modelData

                objectName: "photograph." + modelData.name
                source: modelData.source
                checked: root.photograph == modelData.source
                onClicked: root.photograph = modelData.source
                text: "Photograph: " + modelData.name
            }
        }

        Item {
            Layout.fillWidth: true
            Layout.fillHeight: true

            ExportStatus {
                anchors.verticalCenter: parent.verticalCenter
                anchors.left: parent.left
                anchors.leftMargin: Theme.margin
                anchors.right: parent.right
                anchors.rightMargin: Theme.margin
                exports: root.exports
            }
        }

        Switch {
            id: compare

            objectName: "compare"
            text: "Before / after"
            checked: true
        }

        Item { implicitWidth: Theme.spacing }

        Button {
            objectName: "reset"
            text: "Reset effect"
            onClicked: root.resetRequested()

            ToolTip.visible: hovered
            ToolTip.text: "Takes every property to its neutral value, or else its default, and the mask off"
        }

        ExportButton {
            exports: root.exports
            onClicked: root.exportRequested()
        }
    }
}
