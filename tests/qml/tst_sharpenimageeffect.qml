import QtQuick 2.15
import Korvel.ImageFx 1.0

EffectTestCase {
    name: "SharpenImageEffect"
    effectId: "ko.orvanto.imageeffect.Sharpen"
    subject: Component { SharpenImageEffect {} }
    own: [
        { tag: "strength", initial: 0.5 },
        { tag: "radius", initial: 1, low: 1, high: 80 }
    ]
}
