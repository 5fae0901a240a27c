import QtQuick 2.15
import Korvel.ImageFx 1.0

EffectEntry {
    title: "Brightness and contrast"
    sentence: "Lifts or lowers all colours, then spreads them around middle grey."
    effect: BrightnessContrastImageEffect { brightness: 0.06; contrast: 0.3 }
    properties: [
        NumberInfo {
            name: "brightness"
            title: "Brightness"
            clamped: false
            colors: ["#101010", "#f0f0f0"]
            sentence: "Added to every channel."
        },
        NumberInfo {
            name: "contrast"
            title: "Contrast"
            clamped: false
            sentence: "\u22121 flattens to grey; 1 leaves hardly more than black and white."
        }
    ]
}
