import QtQuick 2.15
import Korvel.ImageFx 1.0

EffectTestCase {
    name: "GrayScaleImageEffect"
    effectId: "ko.orvanto.imageeffect.GrayScale"
    subject: Component { GrayScaleImageEffect {} }
    own: [
        { tag: "red", initial: 0.344, low: 0, high: 1 },
        { tag: "green", initial: 0.5, low: 0, high: 1 },
        { tag: "blue", initial: 0.156, low: 0, high: 1 }
    ]
}
