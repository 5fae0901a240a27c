import QtQuick 2.15
import Korvel.ImageFx 1.0

EffectTestCase {
    name: "HSVImageEffect"
    effectId: "ko.orvanto.imageeffect.HSV"
    subject: Component { HSVImageEffect {} }
    own: [
        { tag: "hue", initial: 0, low: -1, high: 1 },
        { tag: "saturation", initial: 0, low: -1, high: 1 },
        { tag: "value", initial: 0, low: -1, high: 1 }
    ]
}
