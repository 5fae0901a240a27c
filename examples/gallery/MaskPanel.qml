import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import Korvel.ImageFx 1.0
import "catalogue"
import "theme"

// The effect's mask: its kind, its gradient and whether it is shown on the picture.
Rectangle {
    id: root

    property EffectEntry entry
    readonly property ImageEffect effect: entry.effect
    readonly property MaskInfo kind: entry.masks.kindOf(entry.effect.alphaMask)
    readonly property bool masked: kind.mask !== null
    readonly property bool showsMask: show.checked && show.enabled

    implicitHeight: 216
    color: Theme.panel

    ColumnLayout {
        anchors.fill: parent
        anchors.margins: Theme.margin
        anchors.topMargin: Theme.spacing
        spacing: Theme.spacing

        RowLayout {
            objectName: "alphaMask"
            spacing: 2

            Text {
                Layout.preferredWidth: 52
                text: "Mask"
                font.pixelSize: Theme.textSize
                font.bold: true
                color: Theme.text
            }

            Repeater {
                model: root.entry.masks.kinds

                Button {
                    required property var modelData

                    objectName: "alphaMask." + modelData.title
                    text: modelData.title
                    checked: root.kind === modelData
                    onClicked: root.effect.alphaMask = modelData.mask
                }
            }

            Item { Layout.fillWidth: true }

            Switch {
                id: show

                objectName: "showMask"
                text: "Show mask"
                enabled: root.masked

                ToolTip.visible: hovered
                ToolTip.text: "Red where the mask holds the effect back"
            }
        }

        RowLayout {
            Layout.minimumHeight: Theme.controlHeight
            spacing: Theme.margin

            ColumnLayout {
                spacing: 0

                Text {
                    Layout.fillWidth: true
                    text: root.kind.sentence
                    font.pixelSize: Theme.smallSize
                    color: Theme.faint
                    elide: Text.ElideRight
                }

                Text {
                    objectName: "mask.maskId"
                    visible: root.masked
                    text: root.masked ? root.kind.mask.maskId : ""
                    font.family: "monospace"
                    font.pixelSize: Theme.smallSize
                    color: Theme.faint
                }
            }

            ComboBox {
                objectName: "mask.gradientInterpolation"
                implicitWidth: 120
                visible: root.masked
                model: ["Constant", "Linear", "Hermite"]
                currentIndex: root.masked ? root.kind.mask.gradientInterpolation : 0
                onActivated: function(index) { root.kind.mask.gradientInterpolation = index }

                ToolTip.visible: hovered
                ToolTip.text: "How the gradient runs from stop to stop; default Hermite, a smooth step"
            }

            Switch {
                objectName: "mask.enabled"
                visible: root.masked
                text: "Mask on"
                checked: root.masked && root.kind.mask.enabled
                onToggled: root.kind.mask.enabled = checked
            }
        }

        Loader {
            Layout.fillWidth: true
            Layout.fillHeight: true
            active: root.masked
            sourceComponent: GradientPanel { kind: root.kind }
        }
    }
}
