import QtQuick 2.15
import Korvel.ImageFx 1.0

// The nested effects as a list are in tst_listproperties.qml.
EffectTestCase {
    name: "BatchImageEffect"
    effectId: "ko.orvanto.imageeffect.Batch"
    subject: Component { BatchImageEffect {} }
    others: ["effectId", "alphaMask", "imageEffects"]

    function test_aBatchNeverHoldsItself() {
        const outer = create();
        const inner = create();
        outer.imageEffects = [inner];
        const heard = record(inner);
        inner.imageEffects = [outer, inner];
        compare(inner.imageEffects.length, 0);
        compare(taken(heard), "");
    }

    function test_batchesNest() {
        const batch = declare(
            "BatchImageEffect { imageEffects: BatchImageEffect { "
            + "imageEffects: BlurImageEffect {} } }");
        const blur = batch.imageEffects[0].imageEffects[0];
        const heard = record(batch);
        blur.radius = 5;
        compare(taken(heard), "updateRequired");
        batch.destroy();
    }
}
