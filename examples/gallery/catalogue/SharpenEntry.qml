import QtQuick 2.15
import Korvel.ImageFx 1.0

EffectEntry {
    title: "Sharpen"
    sentence: "An unsharp mask: adds the difference between the picture and a box blur of it."
    effect: SharpenImageEffect { strength: 1.2; radius: 4 }
    properties: [
        NumberInfo {
            name: "strength"
            title: "Strength"
            from: 0
            to: 4
            clamped: false
            sentence: "How much of the difference is added; the default is 0.5."
        },
        NumberInfo {
            name: "radius"
            title: "Radius"
            from: 1
            to: 80
            neutral: 1
            canBeNeutral: false
            step: 1
            decimals: 1
            unit: " px"
            sentence: "Reach of the box blur, in pixels of the photograph."
        }
    ]
}
