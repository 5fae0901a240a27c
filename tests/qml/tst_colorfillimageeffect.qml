import QtQuick 2.15
import Korvel.ImageFx 1.0

EffectTestCase {
    name: "ColorFillImageEffect"
    effectId: "ko.orvanto.imageeffect.ColorFill"
    subject: Component { ColorFillImageEffect {} }
    own: [
        { tag: "color", initial: "#ff0000", values: ["#0000ff", "#400000ff", "#ff0000"] }
    ]

    function test_coloursAreNamedAndComputed() {
        const effect = create();
        effect.color = "teal";
        checkSame(effect.color, "#008080");
        effect.color = Qt.rgba(1, 1, 0, 1);
        checkSame(effect.color, "#ffff00");
        checkSame(effect.color.g, 1);
    }
}
