import QtQuick 2.15
import Korvel.ImageFx 1.0

EffectEntry {
    title: "Batch"
    sentence: "A list of effects as one effect, with one opacity, one mask and one blend mode."
    effect: BatchImageEffect {
        imageEffects: [
            GrayScaleImageEffect { name: "Grey scale, softly"; alpha: 0.7 },
            BrightnessContrastImageEffect { name: "Contrast"; contrast: 0.25 },
            ColorFillImageEffect {
                name: "Warm tint"
                color: "#c98f4a"
                alpha: 0.5
                blendMode: ImageEffect.SoftLight
            }
        ]
    }
    properties: [
        EffectsInfo {
            name: "imageEffects"
            title: "Effects"
            sentence: "Applied in this order to a copy of the picture."
        }
    ]
}
