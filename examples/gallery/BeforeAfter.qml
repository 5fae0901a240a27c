import QtQuick 2.15
import Korvel.Core 1.0
import Korvel.ImageFx 1.0
import "theme"

// The photograph, and right of a divider the same photograph through the effect.
Item {
    id: root

    property url photograph
    property ImageEffect effect
    property bool comparing: true
    property bool showsMask: false

    readonly property int edge: comparing ? divider.place : 0

    onEffectChanged: showEffect()
    onShowsMaskChanged: showEffect()

    // In this order: only a listed effect can show its mask.
    function showEffect() {
        buffer.clearEffects()
        buffer.insertEffect(effect)
        buffer.maskViewLayer = showsMask ? effect : null
    }

    Item {
        id: frame

        readonly property real scaling: Math.min((root.width - 2 * Theme.margin) / image.implicitWidth,
                                                 (root.height - 2 * Theme.margin) / image.implicitHeight)

        anchors.centerIn: parent
        // Whole pixels: half of one would blur the picture.
        width: Math.max(2, 2 * Math.floor(image.implicitWidth * scaling / 2))
        height: Math.max(2, 2 * Math.floor(image.implicitHeight * scaling / 2))

        Image {
            id: image

            objectName: "before"
            anchors.fill: parent
            source: root.photograph
            mipmap: true
        }

        Item {
            x: root.edge
            width: parent.width - x
            height: parent.height
            clip: true

            // Above the buffer, so that it renders in the pixels of the screen.
            RenderScope {
                x: -root.edge
                width: frame.width
                height: frame.height

                PixelBuffer {
                    id: buffer

                    objectName: "after"
                    anchors.fill: parent
                    sourceItem: image
                }
            }
        }

        Caption {
            anchors.left: parent.left
            visible: root.comparing && root.edge > width
            text: "Before"
        }

        Caption {
            anchors.right: parent.right
            visible: root.comparing && frame.width - root.edge > width
            text: root.showsMask ? "Mask" : "After"
        }

        Divider {
            id: divider

            objectName: "divider"
            visible: root.comparing
            anchors.fill: parent
        }
    }
}
