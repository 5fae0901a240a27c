import QtQuick 2.15
import Korvel.ImageFx 1.0

// An effect with all that the gallery says about it. It keeps its settings and its masks while
// other effects are shown.
QtObject {
    id: root

    property string title
    property string sentence
    property ImageEffect effect
    property list<PropertyInfo> properties
    // What every effect has; its switch and its mask have places of their own.
    readonly property list<PropertyInfo> commonProperties: [
        NumberInfo {
            name: "alpha"
            title: "Opacity"
            from: 0
            clamped: false
            neutral: 1
            canBeNeutral: false
            sentence: "How much of the effect shows over the picture."
        },
        BlendModeInfo {},
        TextInfo {
            name: "name"
            title: "Name"
            range: "free text \u00b7 default empty"
            sentence: "What an application calls the effect in its list."
        }
    ]
    readonly property MaskSet masks: MaskSet {}

    Component.onCompleted: {
        for (const info of all()) {
            info.effect = effect
        }
    }

    function all() {
        return Array.from(properties).concat(Array.from(commonProperties))
    }

    function reset() {
        all().forEach(info => info.reset())
        effect.enabled = true
        effect.alphaMask = null
    }
}
