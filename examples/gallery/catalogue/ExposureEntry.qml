import QtQuick 2.15
import Korvel.ImageFx 1.0

EffectEntry {
    title: "Exposure"
    sentence: "Brightens or darkens the picture, its shadows or its lights, by one tone curve."
    effect: ExposureImageEffect { exposure: 0.3; darkTones: 0.2 }
    properties: [
        NumberInfo {
            name: "exposure"
            title: "Exposure"
            colors: ["#101010", "#f0f0f0"]
            sentence: "The whole picture."
        },
        NumberInfo {
            name: "darkTones"
            title: "Dark tones"
            colors: ["black", "#606060"]
            sentence: "The shadows: \u22121 deepens them, 1 opens them."
        },
        NumberInfo {
            name: "lightTones"
            title: "Light tones"
            colors: ["#a0a0a0", "white"]
            sentence: "The lights; \u22121 takes white itself down."
        }
    ]
}
