import QtQuick 2.15
import Korvel.ImageFx 1.0

EffectTestCase {
    name: "ChannelShiftImageEffect"
    effectId: "ko.orvanto.imageeffect.ChannelShift"
    subject: Component { ChannelShiftImageEffect {} }
    own: [
        { tag: "red", initial: 0 },
        { tag: "green", initial: 0 },
        { tag: "blue", initial: 0 }
    ]
}
