import QtQuick 2.15
import Korvel.ImageFx 1.0
import "catalogue"
import "theme"

// A mask's gradient as the mask has built it: as a curve, as greys (white is the whole effect) and
// over the colours, if any, that its places stand for.
Canvas {
    id: root

    property MaskInfo kind
    property real inset: 0

    readonly property AlphaMask mask: kind.mask
    readonly property real run: width - 2 * inset
    readonly property real curveHeight: height - 40
    readonly property real stripCentre: curveHeight + 9

    function xOf(location) { return inset + location * run }
    function yOf(value) { return inset + (1 - value) * (curveHeight - 2 * inset) }
    function locationAt(x) { return Math.max(0, Math.min(1, (x - inset) / run)) }
    function valueAt(y) {
        return Math.max(0, Math.min(1, 1 - (y - inset) / (curveHeight - 2 * inset)))
    }

    onKindChanged: requestPaint()
    onPaint: {
        const context = getContext("2d")
        context.reset()
        context.fillStyle = Theme.line
        context.fillRect(0, 0, width, curveHeight)
        context.fillStyle = Theme.control
        for (let x = 0; x < run; ++x) {
            const top = yOf(mask.intensityAtLocation(x / run))
            context.fillRect(inset + x, top, 1, curveHeight - top)
        }
        for (let x = 0; x < run; ++x) {
            const level = mask.intensityAtLocation(x / run)
            context.fillStyle = Qt.rgba(level, level, level, 1)
            context.fillRect(inset + x, stripCentre - 5, 1, 10)
        }
        if (kind.colors.length > 0) {
            const colors = context.createLinearGradient(inset, 0, inset + run, 0)
            kind.colors.forEach((color, i) => colors.addColorStop(i / (kind.colors.length - 1), color))
            context.fillStyle = colors
            context.fillRect(inset, curveHeight + 16, run, 6)
        }
    }

    Connections {
        target: root.mask

        function onGradientChanged() { root.requestPaint() }
    }

    Text {
        x: root.inset
        anchors.bottom: parent.bottom
        text: root.kind.start
        font.pixelSize: Theme.smallSize
        color: Theme.faint
    }

    Text {
        x: root.width - root.inset - width
        anchors.bottom: parent.bottom
        text: root.kind.end
        font.pixelSize: Theme.smallSize
        color: Theme.faint
    }
}
