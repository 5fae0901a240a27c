import QtQuick 2.15
import Korvel.ImageFx 1.0

// A mask of each kind, to choose from; each starts with a gradient from nothing to the whole effect.
QtObject {
    readonly property list<MaskInfo> kinds: [
        MaskInfo {
            title: "None"
            sentence: "Everywhere. A mask limits the effect to a part of the picture."
        },
        MaskInfo {
            title: "Distance"
            sentence: "By place: from the centre of the picture to its corners."
            start: "centre"
            end: "corner"
            mask: DistanceAlphaMask {
                gradientStops: [ AlphaGradientStop { location: 0.2; value: 0 },
                                 AlphaGradientStop { location: 0.8; value: 1 } ]
            }
        },
        MaskInfo {
            title: "Hue"
            sentence: "By hue: round the colour circle, whose end meets its start."
            start: "red"
            end: "red"
            colors: ["red", "yellow", "lime", "cyan", "blue", "magenta", "red"]
            mask: HueAlphaMask {
                gradientStops: [ AlphaGradientStop { location: 0.15; value: 1 },
                                 AlphaGradientStop { location: 0.35; value: 0 },
                                 AlphaGradientStop { location: 0.85; value: 0 } ]
            }
        },
        MaskInfo {
            title: "Luminance"
            sentence: "By brightness: from the blacks to the whites."
            start: "black"
            end: "white"
            colors: ["black", "white"]
            mask: LuminanceAlphaMask {
                gradientStops: [ AlphaGradientStop { location: 0.2; value: 0 },
                                 AlphaGradientStop { location: 0.8; value: 1 } ]
            }
        }
    ]

    function kindOf(mask) {
        return Array.from(kinds).find(kind => kind.mask === mask)
    }
}
