import QtQuick 2.15
import Korvel.ImageFx 1.0

EffectEntry {
    title: "Hue, saturation, value"
    sentence: "Turns the hue, then changes the saturation, then mixes towards white or black."
    effect: HSVImageEffect { hue: -0.08; saturation: 0.35 }
    properties: [
        NumberInfo {
            name: "hue"
            title: "Hue"
            colors: ["cyan", "blue", "magenta", "red", "yellow", "lime", "cyan"]
            sentence: "\u22121 and 1 turn the hue by half a circle; the colours show where red goes."
        },
        NumberInfo {
            name: "saturation"
            title: "Saturation"
            colors: ["#808080", "#d04040"]
            sentence: "\u22121 is grey, 1 doubles the distance from grey."
        },
        NumberInfo {
            name: "value"
            title: "Value"
            colors: ["black", "white"]
            sentence: "\u22121 is black, 1 is white."
        }
    ]
}
