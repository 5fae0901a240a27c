import QtQuick 2.15
import Korvel.ImageFx 1.0

EffectTestCase {
    name: "BlurImageEffect"
    effectId: "ko.orvanto.imageeffect.Blur"
    subject: Component { BlurImageEffect {} }
    own: [
        { tag: "radius", initial: 1, low: 1, high: 100 }
    ]
}
