import QtQuick 2.15
import Korvel.ImageFx 1.0

EffectTestCase {
    name: "SelectiveSaturationImageEffect"
    effectId: "ko.orvanto.imageeffect.SelectiveSaturation"
    subject: Component { SelectiveSaturationImageEffect {} }
    own: ["red", "orange", "yellow", "green", "aqua", "blue", "purple", "magenta"].map(
        colour => ({ tag: colour, initial: 0, low: -1, high: 1 }))

    function test_rebuildingTheTableSignalsNothing() {
        const effect = create({ red: 0.5 });
        const heard = record(effect);
        effect.updateTable();
        compare(taken(heard), "");
        checkSame(effect.red, 0.5);
    }
}
