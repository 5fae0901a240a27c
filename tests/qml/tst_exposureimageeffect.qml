import QtQuick 2.15
import Korvel.ImageFx 1.0

EffectTestCase {
    name: "ExposureImageEffect"
    effectId: "ko.orvanto.imageeffect.Exposure"
    subject: Component { ExposureImageEffect {} }
    own: [
        { tag: "exposure", initial: 0, low: -1, high: 1 },
        { tag: "darkTones", initial: 0, low: -1, high: 1 },
        { tag: "lightTones", initial: 0, low: -1, high: 1 }
    ]
}
