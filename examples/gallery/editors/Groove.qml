import QtQuick 2.15
import QtQuick.Templates 2.15 as T
import "../theme"

// The background of a slider: a run of colours, or a bar from `origin` to the handle; and a tick where
// a double click takes the handle.
Rectangle {
    id: root

    required property T.Slider slider
    required property var colors
    required property real origin
    required property real resting

    readonly property real inset: slider.handle.width / 2
    readonly property real run: width - 2 * inset

    x: slider.leftPadding
    y: (slider.height - height) / 2
    width: slider.availableWidth
    height: 6
    radius: 3
    color: Theme.control
    gradient: colors.length > 0 ? hues : null

    function place(value) {
        return inset + (value - slider.from) / (slider.to - slider.from) * run
    }

    function colorAt(position) {
        if (colors.length === 0) {
            return Theme.control
        }
        const place = position * (colors.length - 1)
        const left = Qt.lighter(colors[Math.floor(place)], 1)
        const right = Qt.lighter(colors[Math.ceil(place)], 1)
        const mix = (from, to) => from + (to - from) * (place - Math.floor(place))
        return Qt.rgba(mix(left.r, right.r), mix(left.g, right.g), mix(left.b, right.b), 1)
    }

    Gradient {
        id: hues

        orientation: Gradient.Horizontal
        GradientStop { position: 0 / 6; color: root.colorAt(0 / 6) }
        GradientStop { position: 1 / 6; color: root.colorAt(1 / 6) }
        GradientStop { position: 2 / 6; color: root.colorAt(2 / 6) }
        GradientStop { position: 3 / 6; color: root.colorAt(3 / 6) }
        GradientStop { position: 4 / 6; color: root.colorAt(4 / 6) }
        GradientStop { position: 5 / 6; color: root.colorAt(5 / 6) }
        GradientStop { position: 6 / 6; color: root.colorAt(6 / 6) }
    }

    Rectangle {
        readonly property real start: root.place(root.origin)
        readonly property real end: root.place(root.slider.value)

        visible: root.colors.length === 0
        x: Math.min(start, end)
        width: Math.abs(end - start)
        height: parent.height
        color: Theme.faint
    }

    Rectangle {
        x: root.place(root.resting) - 1
        y: -4
        width: 2
        height: parent.height + 8
        color: Theme.edge
    }
}
