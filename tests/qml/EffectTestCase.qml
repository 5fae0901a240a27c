import QtQuick 2.15
import Korvel.ImageFx 1.0

// What every effect inherits from ImageEffect.
TypeTestCase {
    id: testCase

    property string effectId

    // The rows of the properties that the effect adds.
    property var own: []

    properties: [
        { tag: "name", initial: "", values: ["Dawn", "Dusk", ""], heard: "nameChanged" },
        { tag: "enabled", initial: true, values: [false, true] },
        { tag: "alpha", initial: 1 },
        { tag: "blendMode", initial: ImageEffect.Normal,
          values: [ImageEffect.Screen, ImageEffect.DarkenOnly, 99, -1],
          literal: "ImageEffect.Screen" }
    ].concat(own)
    others: ["effectId", "alphaMask"]

    Component {
        id: mask

        HueAlphaMask {}
    }

    function createMask() {
        return createTemporaryObject(mask, testCase);
    }

    function test_effectIdIsFixed() {
        const effect = create();
        compare(effect.effectId, effectId);
        verify(complaint(() => { effect.effectId = "another"; }).includes("read-only"));
        compare(effect.effectId, effectId);
    }

    function test_aMaskSignalsWhenItIsAnotherOne() {
        const effect = create();
        const heard = record(effect);
        const both = "alphaMaskChanged updateRequired";
        const first = createMask();
        checkSame(effect.alphaMask, null);
        effect.alphaMask = null;
        compare(taken(heard), "");
        effect.alphaMask = first;
        checkSame(effect.alphaMask, first);
        compare(taken(heard), both);
        effect.alphaMask = first;
        compare(taken(heard), "");
        effect.alphaMask = createMask();
        compare(taken(heard), both);
        effect.alphaMask = null;
        checkSame(effect.alphaMask, null);
        compare(taken(heard), both);
    }

    function test_changesOfTheMaskAskForAnUpdate() {
        const effect = create();
        const former = createMask();
        effect.alphaMask = former;
        const heard = record(effect);
        former.enabled = false;
        compare(taken(heard), "updateRequired");
        const stop = former.addGradientStop(0.5, 0.5);
        compare(taken(heard), "updateRequired");
        stop.value = 0.25;
        compare(taken(heard), "updateRequired");
        effect.alphaMask = createMask();
        taken(heard);
        former.enabled = true;
        stop.value = 0.75;
        compare(taken(heard), "");
    }

    function test_aDestroyedMaskReadsNullWithoutASignal() {
        const effect = create();
        const gone = createMask();
        effect.alphaMask = gone;
        const heard = record(effect);
        letGo(gone);
        checkSame(effect.alphaMask, null);
        effect.alphaMask = null;
        compare(taken(heard), "");
    }

    function test_onlyAMaskServesAsMask() {
        const effect = create();
        verify(complaint(() => { effect.alphaMask = effect; }).startsWith("Cannot assign"));
        checkSame(effect.alphaMask, null);
    }

    function test_aMaskIsDeclaredInPlace() {
        const effect = declare(name + " { alphaMask: LuminanceAlphaMask { enabled: false } }");
        compare(effect.alphaMask.maskId, "ko.orvanto.alphamask.Luminance");
        compare(effect.alphaMask.enabled, false);
        effect.destroy();
    }
}
