import QtQuick 2.15
import Korvel.ImageFx 1.0
import Korvel.ImageFx.Tests 1.0

// The item as QML edits it. The effects as a list are in tst_listproperties.qml.
TypeTestCase {
    id: testCase

    name: "PixelBuffer"
    when: windowShown
    subject: Component { PixelBuffer {} }
    afterwards: ""
    properties: [
        { tag: "sourceRect", initial: Qt.rect(0, 0, 0, 0), literal: "\"0,0.25,0.5x0.5\"",
          values: [Qt.rect(0, 0.25, 0.5, 0.5), Qt.rect(0, 0.25, 0.5, 0.75)] },
        { tag: "referenceSize", initial: Qt.size(-1, -1), literal: "\"300x200\"",
          values: [Qt.size(300, 200), Qt.size(300, 201), Qt.size(301, 201)] },
        { tag: "frozen", initial: false, values: [true, false] },
        { tag: "imageEffectsEnabled", initial: true, values: [false, true] },
        { tag: "imageEffectAlpha", initial: 1, low: 0, high: 1 }
    ]
    others: ["sourceItem", "imageEffects", "maskViewLayer", "mask"]

    QtObject {
        id: observer

        property var seen
    }

    Component { id: item; Item {} }
    Component { id: effect; HSVImageEffect {} }

    Component {
        id: scene

        // A grey square, shown blue where the mask lets the fill through.
        Item {
            property alias buffer: buffer
            property alias gradient: gradient

            width: 16
            height: 16

            Rectangle {
                id: square

                anchors.fill: parent
                color: "grey"
                layer.enabled: true
            }

            PixelBuffer {
                id: buffer

                anchors.fill: parent
                sourceItem: square
                imageEffects: ColorFillImageEffect {
                    color: "blue"
                    alphaMask: LuminanceAlphaMask {
                        id: gradient

                        gradientInterpolation: AlphaMask.LinearInterpolation
                        gradientStops: [
                            AlphaGradientStop { location: 0.25; value: 1 },
                            AlphaGradientStop { location: 0.75; value: 0 }
                        ]
                    }
                }
            }
        }
    }

    function createEffects(count) {
        return Array.from({ length: count }, () => createTemporaryObject(effect, testCase));
    }

    function checkEffects(buffer, effects) {
        compare(buffer.imageEffects.length, effects.length);
        effects.forEach((listed, i) => checkSame(buffer.imageEffects[i], listed));
    }

    // A buffer that lists some effects, and what it has signalled since.
    function createWith(effects) {
        const buffer = create();
        buffer.imageEffects = effects;
        return { buffer: buffer, heard: record(buffer) };
    }

    function test_signalsAreDeclaredInThisOrder() {
        compare(Inspector.signalNames(create()), [
            "sourceItemChanged", "sourceRectChanged", "referenceSizeChanged", "frozenChanged",
            "imageEffectsChanged", "imageEffectsEnabledChanged", "imageEffectAlphaChanged",
            "maskViewLayerChanged", "maskChanged", "renderScaleChanged"
        ]);
    }

    function test_rectanglesAreComparedLoosely() {
        const buffer = create({ sourceRect: Qt.rect(0.25, 0.25, 0.5, 0.5) });
        const heard = record(buffer);
        buffer.sourceRect = Qt.rect(0.25, 0.25, 0.5, 0.5 * (1 + 1e-13));
        compare(taken(heard), "");
        buffer.sourceRect = Qt.rect(0.25, 0.25, 0.5, 0.5 * (1 + 1e-10));
        compare(taken(heard), "sourceRectChanged");
    }

    function test_freezingIsSettingFrozen() {
        const buffer = create();
        const heard = record(buffer);
        buffer.unfreeze();
        compare(taken(heard), "");
        buffer.freeze();
        checkSame(buffer.frozen, true);
        compare(taken(heard), "frozenChanged");
        buffer.freeze();
        compare(taken(heard), "");
        buffer.unfreeze();
        checkSame(buffer.frozen, false);
        compare(taken(heard), "frozenChanged");
    }

    function test_frozenSettersStoreAndSignal_data() {
        return properties.filter(row => row.tag !== "frozen");
    }

    function test_frozenSettersStoreAndSignal(row) {
        const buffer = create({ frozen: true });
        const heard = record(buffer);
        const change = firstChange(row);
        buffer[row.tag] = change.write;
        checkSame(buffer[row.tag], change.reads);
        compare(taken(heard), row.tag + "Changed");
    }

    function test_itemsAreHeldWeakly_data() {
        return [{ tag: "sourceItem" }, { tag: "mask" }];
    }

    function test_itemsAreHeldWeakly(row) {
        const buffer = create();
        const items = [0, 1].map(() => createTemporaryObject(item, testCase));
        const heard = record(buffer);
        const write = (value, signals) => {
            buffer[row.tag] = value;
            checkSame(buffer[row.tag], value);
            compare(taken(heard), signals);
        };
        checkSame(buffer[row.tag], null);
        observer.seen = Qt.binding(() => buffer[row.tag]);
        write(null, "");
        write(items[0], row.tag + "Changed");
        checkSame(observer.seen, items[0]);
        write(items[0], "");
        write(items[1], row.tag + "Changed");
        write(null, row.tag + "Changed");
        write(items[1], row.tag + "Changed");
        observer.seen = undefined;
        letGo(items[1]);
        checkSame(buffer[row.tag], null);
        write(null, "");
        write(items[0], row.tag + "Changed");
    }

    function test_onlyItemsAreSources_data() {
        return test_itemsAreHeldWeakly_data();
    }

    function test_onlyItemsAreSources(row) {
        const buffer = create();
        verify(complaint(() => { buffer[row.tag] = observer; }).startsWith("Cannot assign"));
        checkSame(buffer[row.tag], null);
    }

    function test_insertingTakesAnyIndex_data() {
        return [
            { tag: "the first", index: 0, order: [2, 0, 1] },
            { tag: "between", index: 1, order: [0, 2, 1] },
            { tag: "the end", index: 2, order: [0, 1, 2] },
            { tag: "past the end", index: 99, order: [0, 1, 2] },
            { tag: "negative", index: -5, order: [0, 1, 2] },
            { tag: "none", order: [0, 1, 2] }
        ];
    }

    function test_insertingTakesAnyIndex(row) {
        const effects = createEffects(3);
        const { buffer, heard } = createWith(effects.slice(0, 2));
        if (row.index === undefined) {
            buffer.insertEffect(effects[2]);
        } else {
            buffer.insertEffect(effects[2], row.index);
        }
        compare(taken(heard), "imageEffectsChanged");
        checkEffects(buffer, row.order.map(i => effects[i]));
    }

    function test_aDisabledEffectIsInserted() {
        const effects = createEffects(1);
        const { buffer, heard } = createWith([]);
        effects[0].enabled = false;
        buffer.insertEffect(effects[0]);
        compare(taken(heard), "imageEffectsChanged");
        checkEffects(buffer, effects);
    }

    function test_insertingNullDoesNothing() {
        const effects = createEffects(1);
        const { buffer, heard } = createWith(effects);
        buffer.insertEffect(null);
        buffer.insertEffect(null, 0);
        compare(taken(heard), "");
        checkEffects(buffer, effects);
    }

    function test_onlyTheFirstEntryIsRemoved() {
        const [twice, between] = createEffects(2);
        const { buffer, heard } = createWith([twice, between, twice]);
        buffer.removeEffect(twice);
        compare(taken(heard), "imageEffectsChanged");
        checkEffects(buffer, [between, twice]);
        buffer.removeEffect(twice);
        compare(taken(heard), "imageEffectsChanged");
        checkEffects(buffer, [between]);
        twice.alpha = 0.5;
        checkSame(twice.alpha, 0.5);
    }

    function test_removingWhatIsNotListedDoesNothing() {
        const [listed, stranger] = createEffects(2);
        const { buffer, heard } = createWith([listed]);
        buffer.removeEffect(stranger);
        buffer.removeEffect(null);
        compare(taken(heard), "");
        checkEffects(buffer, [listed]);
    }

    function test_clearingSignalsOnce() {
        const { buffer, heard } = createWith(createEffects(3));
        buffer.clearEffects();
        compare(taken(heard), "imageEffectsChanged");
        checkEffects(buffer, []);
        buffer.clearEffects();
        compare(taken(heard), "");
    }

    function test_theMaskViewLayerIsAListedEffect() {
        const [first, second, stranger] = createEffects(3);
        const { buffer, heard } = createWith([first, second]);
        const write = (value, reads) => {
            buffer.maskViewLayer = value;
            checkSame(buffer.maskViewLayer, reads);
        };
        checkSame(buffer.maskViewLayer, null);
        write(stranger, null);
        write(first, first);
        write(first, first);
        write(second, second);
        write(stranger, null);
        write(second, second);
        write(null, null);
        compare(taken(heard), "");
    }

    function test_bindingsDoNotFollowTheMaskViewLayer() {
        const [listed] = createEffects(1);
        const { buffer } = createWith([listed]);
        observer.seen = Qt.binding(() => buffer.maskViewLayer);
        buffer.maskViewLayer = listed;
        checkSame(observer.seen, null);
        observer.seen = undefined;
    }

    function test_theMaskViewLayerStaysWhenItLeavesTheList() {
        const [first, second] = createEffects(2);
        const { buffer } = createWith([first, second]);
        buffer.maskViewLayer = first;
        buffer.removeEffect(first);
        checkSame(buffer.maskViewLayer, first);
        buffer.clearEffects();
        checkSame(buffer.maskViewLayer, first);
        buffer.maskViewLayer = second;
        checkSame(buffer.maskViewLayer, null);
    }

    function test_aDestroyedMaskViewLayerReadsNullWithoutASignal() {
        const [first, second] = createEffects(2);
        const { buffer, heard } = createWith([first, second]);
        buffer.maskViewLayer = first;
        letGo(first);
        checkSame(buffer.maskViewLayer, null);
        compare(taken(heard), "");
        checkEffects(buffer, [second]);
    }

    function test_effectsOutliveTheItem() {
        const [effect] = createEffects(1);
        const { buffer } = createWith([effect]);
        letGo(buffer);
        effect.alpha = 0.5;
        checkSame(effect.alpha, 0.5);
    }

    function test_drawingSignalsNothing() {
        const { buffer } = createTemporaryObject(scene, testCase.parent);
        const heard = record(buffer);
        const drawn = grabImage(buffer);
        // 128 of 255 are let through.
        fuzzyCompare(drawn.pixel(8, 8), Qt.rgba(0.25, 0.25, 0.75, 1), 0.01);
        buffer.referenceSize = Qt.size(160, 160);
        buffer.parent.width = 8;
        verify(grabImage(buffer).width === 8);
        compare(taken(heard), "referenceSizeChanged");
    }

    function test_aDrawnMaskKnowsItsIntensities() {
        const { buffer, gradient } = createTemporaryObject(scene, testCase.parent);
        grabImage(buffer);
        checkSame(gradient.intensityAtLocation(-1), 1);
        checkSame(gradient.intensityAtLocation(0.25), 1);
        checkSame(gradient.intensityAtLocation(0.5), Math.fround(128 / 255));
        checkSame(gradient.intensityAtLocation(1), 0);
    }
}
