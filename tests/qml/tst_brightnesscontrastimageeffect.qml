import QtQuick 2.15
import Korvel.ImageFx 1.0

EffectTestCase {
    name: "BrightnessContrastImageEffect"
    effectId: "ko.orvanto.imageeffect.BrightnessContrast"
    subject: Component { BrightnessContrastImageEffect {} }
    own: [
        { tag: "brightness", initial: 0 },
        { tag: "contrast", initial: 0 }
    ]
}
