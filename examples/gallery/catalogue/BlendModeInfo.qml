import QtQuick 2.15
import Korvel.ImageFx 1.0

ChoiceInfo {
    name: "blendMode"
    title: "Blend mode"
    range: "16 modes \u00b7 default Normal"
    choices: [
        choice("Normal", ImageEffect.Normal, "The effect's colour replaces the picture's."),
        choice("Add", ImageEffect.Add, "The sum of the two: brighter, up to white."),
        choice("Subtract", ImageEffect.Subtract, "The picture less the effect: darker, down to black."),
        choice("Difference", ImageEffect.Difference, "How far the two are apart: black where they agree."),
        choice("Multiply", ImageEffect.Multiply, "The product: darker, white changes nothing."),
        choice("Divide", ImageEffect.Divide, "The picture divided by the effect: brighter."),
        choice("Screen", ImageEffect.Screen, "The product of the negatives: brighter, black changes nothing."),
        choice("Overlay", ImageEffect.Overlay, "Multiplies the picture's darks, screens its lights."),
        choice("Hard light", ImageEffect.HardLight, "Multiplies or screens, as the effect is dark or light."),
        choice("Soft light", ImageEffect.SoftLight, "A mild darkening or lightening by the effect."),
        choice("Linear light", ImageEffect.LinearLight, "Adds the effect, weighed around middle grey."),
        choice("Colour dodge", ImageEffect.ColorDodge, "Brightens the picture by the effect, with more contrast."),
        choice("Colour burn", ImageEffect.ColorBurn, "Darkens the effect by the picture, with more contrast."),
        choice("Linear burn", ImageEffect.LinearBurn, "The sum less white: darker."),
        choice("Lighten only", ImageEffect.LightenOnly, "Of each channel the lighter one."),
        choice("Darken only", ImageEffect.DarkenOnly, "Of each channel the darker one."),
    ]

    function choice(text, value, sentence) {
        return { text: text, value: value, sentence: sentence }
    }
}
