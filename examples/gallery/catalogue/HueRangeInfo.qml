import QtQuick 2.15

// The saturation of a range of hue, in degrees; the slider's colours run through the range.
NumberInfo {
    id: root

    property int first
    property int most
    property int last

    colors: [0, 1, 2, 3, 4, 5, 6].map(i => hue(first + (last - first) * i / 6))
    sentence: `Hues from ${first}\u00b0 to ${last}\u00b0, most at ${most}\u00b0.`

    function hue(degrees) {
        return Qt.hsva(degrees % 360 / 360, 0.8, 0.9, 1)
    }
}
