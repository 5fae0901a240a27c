import QtQuick 2.15
import Korvel.ImageFx 1.0

EffectEntry {
    title: "Selective saturation"
    sentence: "The saturation of eight ranges of hue, each by itself: \u22121 is grey, 1 doubles "
              + "the distance from grey; where ranges overlap they add up."
    effect: SelectiveSaturationImageEffect { yellow: -0.7; green: -0.7; aqua: 0.4; blue: 0.6 }
    properties: [
        HueRangeInfo { name: "red"; title: "Red"; first: 312; most: 339; last: 395 },
        HueRangeInfo { name: "orange"; title: "Orange"; first: 338; most: 392; last: 410 },
        HueRangeInfo { name: "yellow"; title: "Yellow"; first: 31; most: 51; last: 93 },
        HueRangeInfo { name: "green"; title: "Green"; first: 45; most: 90; last: 175 },
        HueRangeInfo { name: "aqua"; title: "Aqua"; first: 90; most: 172; last: 202 },
        HueRangeInfo { name: "blue"; title: "Blue"; first: 134; most: 200; last: 294 },
        HueRangeInfo { name: "purple"; title: "Purple"; first: 183; most: 294; last: 324 },
        HueRangeInfo { name: "magenta"; title: "Magenta"; first: 293; most: 321; last: 340 }
    ]
}
