import QtQuick 2.15
import Korvel.ImageFx 1.0

EffectEntry {
    title: "Grey scale"
    sentence: "Black and white, as through a colour filter: a weighted sum of the channels."
    effect: GrayScaleImageEffect {}
    properties: [
        NumberInfo {
            name: "red"
            title: "Red"
            from: 0
            neutral: 0.344
            canBeNeutral: false
            decimals: 3
            colors: ["black", "red"]
            sentence: "Weight of the red channel; the three are scaled to add up to 1."
        },
        NumberInfo {
            name: "green"
            title: "Green"
            from: 0
            neutral: 0.5
            canBeNeutral: false
            decimals: 3
            colors: ["black", "lime"]
            sentence: "Weight of the green channel."
        },
        NumberInfo {
            name: "blue"
            title: "Blue"
            from: 0
            neutral: 0.156
            canBeNeutral: false
            decimals: 3
            colors: ["black", "blue"]
            sentence: "Weight of the blue channel."
        }
    ]
}
