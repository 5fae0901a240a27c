import QtQuick 2.15

// A number on a slider.
PropertyInfo {
    id: root

    property real from: -1
    property real to: 1
    // False where the property takes numbers beyond the ends of the slider.
    property bool clamped: true
    property real neutral: 0
    // False where the effect has no neutral value: the slider resets to the default instead.
    property bool canBeNeutral: true
    property real step: 0.01
    property int decimals: 2
    property string unit
    // Colours along the slider, from its left end to its right one; empty for a plain slider.
    property var colors: []

    range: `${number(from)} \u2026 ${number(to)}${unit}${clamped ? "" : " and beyond"} \u00b7 `
           + `${canBeNeutral ? "neutral" : "default"} ${number(neutral)}`
    text: effect ? number(effect[name]) + unit : ""
    editor: Qt.resolvedUrl("../editors/NumberEditor.qml")

    function reset() {
        effect[name] = neutral
    }

    // With a true minus sign, and never "-0".
    function number(value) {
        const rounded = Math.round(value * Math.pow(10, decimals)) / Math.pow(10, decimals)
        const places = Number.isInteger(rounded) ? 0 : decimals
        return (rounded < 0 ? "\u2212" : "") + Math.abs(rounded).toFixed(places)
    }
}
