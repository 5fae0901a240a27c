import QtQuick 2.15
import "../catalogue"

ResettingSlider {
    required property NumberInfo info

    objectName: info.name
    from: info.from
    to: info.to
    stepSize: info.step
    colors: info.colors
    origin: info.canBeNeutral ? info.neutral : info.from
    resting: info.neutral
    value: info.effect[info.name]
    onMoved: info.effect[info.name] = value
    onResetRequested: info.reset()

    Accessible.name: info.title
}
