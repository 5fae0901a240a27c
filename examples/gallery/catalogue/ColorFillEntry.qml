import QtQuick 2.15
import Korvel.ImageFx 1.0

EffectEntry {
    title: "Colour fill"
    sentence: "Replaces every colour by one; opacity, mask and blend mode make it a tint."
    effect: ColorFillImageEffect {
        color: "#d2691e"
        alpha: 0.6
        blendMode: ImageEffect.SoftLight
    }
    properties: [
        ColorInfo {
            name: "color"
            title: "Colour"
            initial: "#ff0000"
            sentence: "The colour; its own alpha is not used."
        }
    ]
}
