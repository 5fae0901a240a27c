import QtQuick 2.15
import Korvel.ImageFx 1.0

EffectEntry {
    title: "Channel shift"
    sentence: "Adds a constant to each colour channel: a colour cast, or a cure for one."
    effect: ChannelShiftImageEffect { red: 0.12; blue: -0.12 }
    properties: [
        NumberInfo {
            name: "red"
            title: "Red"
            clamped: false
            colors: ["cyan", "gray", "red"]
            sentence: "Added to the red channel."
        },
        NumberInfo {
            name: "green"
            title: "Green"
            clamped: false
            colors: ["magenta", "gray", "lime"]
            sentence: "Added to the green channel."
        },
        NumberInfo {
            name: "blue"
            title: "Blue"
            clamped: false
            colors: ["yellow", "gray", "blue"]
            sentence: "Added to the blue channel."
        }
    ]
}
