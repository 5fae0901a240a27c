import QtQuick 2.15
import Korvel.ImageFx 1.0
import "catalogue"
import "theme"

// The stops of a mask's gradient: to the right is further along the gradient, up is more of the
// effect. Below the curve the gradient as the mask applies it, and what its places stand for.
Item {
    id: root

    property MaskInfo kind
    readonly property AlphaMask mask: kind.mask

    // The stop that is being dragged, and whether it is so far off that letting go removes it.
    property AlphaGradientStop dragged: null
    property bool leaving: false

    readonly property int handleRadius: 7
    readonly property real reach: 30

    function indexAt(x, y) {
        for (let i = handles.count - 1; i >= 0; --i) {
            const handle = handles.itemAt(i)
            if (Math.hypot(x - handle.x - handleRadius, y - handle.y - handleRadius)
                    <= handleRadius + 3) {
                return i
            }
        }
        return -1
    }

    function remove(stop) {
        mask.removeGradientStop(stop)
    }

    function press(mouse) {
        let index = indexAt(mouse.x, mouse.y)
        if (mouse.button === Qt.RightButton) {
            if (index >= 0) {
                remove(mask.gradientStops[index])
            }
            return
        }
        if (index < 0) {
            index = mask.gradientStops.length
            mask.addGradientStop(plot.locationAt(mouse.x), plot.valueAt(mouse.y))
        }
        dragged = mask.gradientStops[index]
        handles.itemAt(index).forceActiveFocus()
    }

    function drag(mouse) {
        leaving = mouse.y < -reach || mouse.y > height + reach
        if (dragged && !leaving) {
            dragged.location = plot.locationAt(mouse.x)
            dragged.value = plot.valueAt(mouse.y)
        }
    }

    function release() {
        if (dragged && leaving) {
            remove(dragged)
        }
        dragged = null
        leaving = false
    }

    GradientPlot {
        id: plot

        objectName: "gradientPlot"
        anchors.fill: parent
        kind: root.kind
        inset: root.handleRadius
    }

    Repeater {
        id: handles

        model: root.mask.gradientStops

        GradientStopHandle {
            required property int index
            required property var modelData

            objectName: "stop." + index
            stop: modelData
            x: plot.xOf(stop.location) - width / 2
            y: plot.yOf(stop.value) - height / 2
            width: 2 * root.handleRadius
            opacity: root.leaving && root.dragged === stop ? 0.2 : 1
            onRemoved: root.remove(stop)
        }
    }

    MouseArea {
        anchors.fill: parent
        acceptedButtons: Qt.LeftButton | Qt.RightButton
        preventStealing: true
        onPressed: function(mouse) { root.press(mouse) }
        onPositionChanged: function(mouse) { root.drag(mouse) }
        onReleased: root.release()
        onCanceled: root.release()
        onWheel: function(wheel) {
            const index = root.indexAt(wheel.x, wheel.y)
            if (index >= 0) {
                root.mask.gradientStops[index].value += wheel.angleDelta.y / 120 * 0.05
            }
        }
    }
}
