import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import "../catalogue"
import "../theme"

// A colour as three sliders, and as a field that takes "#rrggbb".
ColumnLayout {
    id: root

    required property ColorInfo info
    readonly property color value: info.effect[info.name]

    spacing: 2

    function withChannel(channel, level) {
        const rgb = { r: value.r, g: value.g, b: value.b }
        rgb[channel] = level
        return Qt.rgba(rgb.r, rgb.g, rgb.b, 1)
    }

    RowLayout {
        spacing: Theme.spacing

        Rectangle {
            implicitWidth: Theme.controlHeight * 2
            implicitHeight: Theme.controlHeight
            radius: Theme.radius
            color: root.value
            border.color: Theme.edge

            TapHandler { onDoubleTapped: root.info.reset() }
        }

        TextField {
            objectName: root.info.name
            Layout.fillWidth: true
            text: root.value
            validator: RegularExpressionValidator { regularExpression: /#[0-9a-fA-F]{6}/ }
            onEditingFinished: root.info.effect[root.info.name] = text
        }
    }

    Repeater {
        model: [{ channel: "r", text: "R" }, { channel: "g", text: "G" }, { channel: "b", text: "B" }]

        RowLayout {
            id: row

            required property var modelData

            spacing: Theme.spacing

            Text {
                text: row.modelData.text
                font.pixelSize: Theme.smallSize
                color: Theme.faint
            }

            ResettingSlider {
                objectName: root.info.name + "." + row.modelData.channel
                Layout.fillWidth: true
                stepSize: 1 / 255
                colors: [root.withChannel(row.modelData.channel, 0),
                         root.withChannel(row.modelData.channel, 1)]
                resting: root.info.initial[row.modelData.channel]
                value: root.value[row.modelData.channel]
                onMoved: root.info.effect[root.info.name] =
                    root.withChannel(row.modelData.channel, value)
                onResetRequested: root.info.reset()
            }
        }
    }
}
