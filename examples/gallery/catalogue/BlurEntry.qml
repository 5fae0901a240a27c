import QtQuick 2.15
import Korvel.ImageFx 1.0

EffectEntry {
    title: "Blur"
    sentence: "A Gaussian blur; a cut-out keeps its hard edge."
    effect: BlurImageEffect { radius: 16 }
    properties: [
        NumberInfo {
            name: "radius"
            title: "Radius"
            from: 1
            to: 100
            neutral: 1
            canBeNeutral: false
            step: 1
            decimals: 1
            unit: " px"
            sentence: "Reach of the blur, in pixels of the photograph."
        }
    ]
}
