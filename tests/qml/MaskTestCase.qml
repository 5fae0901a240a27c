import QtQuick 2.15
import Korvel.ImageFx 1.0

// What every mask inherits from AlphaMask; its stops as a list are in tst_listproperties.qml.
TypeTestCase {
    id: testCase

    property string maskId

    readonly property string listHeard: "gradientStopsChanged updateRequired"

    properties: [
        { tag: "enabled", initial: true, values: [false, true] },
        { tag: "gradientInterpolation", initial: AlphaMask.HermiteInterpolation,
          values: [AlphaMask.ConstantInterpolation, AlphaMask.LinearInterpolation,
                   AlphaMask.HermiteInterpolation],
          literal: "AlphaMask.ConstantInterpolation" }
    ]
    others: ["maskId", "gradientStops"]

    Component {
        id: looseStop

        AlphaGradientStop {}
    }

    function test_maskIdIsFixed() {
        const mask = create();
        compare(mask.maskId, maskId);
        verify(complaint(() => { mask.maskId = "another"; }).includes("read-only"));
        compare(mask.maskId, maskId);
    }

    function test_addedStopsComeLast() {
        const mask = create();
        const heard = record(mask);
        const first = mask.addGradientStop(0.75, 0.5);
        compare(taken(heard), listHeard);
        const second = mask.addGradientStop(0.25, 1);
        compare(taken(heard), listHeard);
        compare(mask.gradientStops.length, 2);
        checkSame(mask.gradientStops[0], first);
        checkSame(mask.gradientStops[1], second);
        checkSame(first.location, 0.75);
        checkSame(first.value, 0.5);
    }

    function test_addedStopsAreNotClamped() {
        const stop = create().addGradientStop(1.5, -2);
        checkSame(stop.location, 1.5);
        checkSame(stop.value, -2);
    }

    function test_addedStopsOutliveTheGarbageCollector() {
        const mask = create();
        mask.addGradientStop(0.25, 0.5);
        gc();
        wait(0);
        compare(mask.gradientStops.length, 1);
        checkSame(mask.gradientStops[0].location, 0.25);
        verify(complaint(() => mask.gradientStops[0].destroy()) !== "");
    }

    function test_changesOfAStopAskForAnUpdate() {
        const mask = create();
        const stop = mask.addGradientStop(0.25, 0.5);
        const heard = record(mask);
        stop.location = 0.5;
        compare(taken(heard), "updateRequired");
        stop.value = 1;
        compare(taken(heard), "updateRequired");
        stop.value = 1;
        compare(taken(heard), "");
    }

    function test_removedStopsStayAlive() {
        const mask = create();
        const stop = mask.addGradientStop(0.25, 0.5);
        const kept = mask.addGradientStop(0.75, 0.5);
        const heard = record(mask);
        mask.removeGradientStop(stop);
        compare(taken(heard), listHeard);
        compare(mask.gradientStops.length, 1);
        checkSame(mask.gradientStops[0], kept);
        stop.value = 1;
        checkSame(stop.value, 1);
        compare(taken(heard), "");
    }

    function test_onlyTheFirstEntryIsRemoved() {
        const mask = create();
        const twice = mask.addGradientStop(0.25, 0.5);
        const between = mask.addGradientStop(0.75, 0.5);
        mask.gradientStops = [twice, between, twice];
        mask.removeGradientStop(twice);
        compare(mask.gradientStops.length, 2);
        checkSame(mask.gradientStops[0], between);
        checkSame(mask.gradientStops[1], twice);
    }

    function test_removingWhatIsNotListedDoesNothing() {
        const mask = create();
        const stranger = createTemporaryObject(looseStop, testCase);
        const heard = record(mask);
        mask.removeGradientStop(stranger);
        mask.removeGradientStop(null);
        compare(taken(heard), "");
        mask.addGradientStop(0.25, 0.5);
        taken(heard);
        mask.removeGradientStop(stranger);
        mask.removeGradientStop(null);
        compare(taken(heard), "");
        compare(mask.gradientStops.length, 1);
    }

    function test_intensityIsThatOfTheGradientLastDrawn() {
        const mask = create();
        mask.addGradientStop(0.5, 0);
        [-1, 0, 0.5, 1, 2].forEach(location => checkSame(mask.intensityAtLocation(location), 1));
    }
}
