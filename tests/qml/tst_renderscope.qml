import QtQuick 2.15
import Korvel.Core 1.0

TypeTestCase {
    id: testCase

    name: "RenderScope"
    subject: Component { RenderScope {} }
    // Values that no window of the test has, so that each is a new ratio in force, too.
    properties: [
        { tag: "pixelRatio", initial: 0, values: [2.5, 0.25, 3.5],
          heard: "pixelRatioChanged requestedPixelRatioChanged" }
    ]
    others: ["effectivePixelRatio"]

    QtObject {
        id: observer

        property var seen
    }

    function declare(text) {
        return Qt.createQmlObject("import Korvel.Core 1.0; " + text, testCase);
    }

    // Outside a window, where the ratio is 1 on every screen.
    function createOutside(values) {
        return create(Object.assign({ parent: null }, values));
    }

    function test_theRatioInForceIsTheOneAskedForOrOne() {
        const scope = createOutside();
        checkSame(scope.effectivePixelRatio, 1);
        scope.pixelRatio = 2.5;
        checkSame(scope.effectivePixelRatio, 2.5);
        scope.pixelRatio = 0;
        checkSame(scope.effectivePixelRatio, 1);
        checkSame(createOutside({ pixelRatio: 0.25 }).effectivePixelRatio, 0.25);
    }

    function test_askingForTheRatioInForceTellsOfTheQuestionOnly() {
        const scope = createOutside();
        const heard = record(scope);
        scope.pixelRatio = 1;
        checkSame(scope.pixelRatio, 1);
        compare(taken(heard), "requestedPixelRatioChanged");
        scope.pixelRatio = 0;
        compare(taken(heard), "requestedPixelRatioChanged");
    }

    function test_whatIsNoRatioCountsAsNone_data() {
        return [{ tag: "negative", ratio: -1 }, { tag: "NaN", ratio: NaN },
                { tag: "infinite", ratio: Infinity }];
    }

    function test_whatIsNoRatioCountsAsNone(row) {
        const scope = createOutside();
        const heard = record(scope);
        scope.pixelRatio = row.ratio;
        checkSame(scope.pixelRatio, 0);
        compare(taken(heard), "");
        scope.pixelRatio = 2.5;
        taken(heard);
        scope.pixelRatio = row.ratio;
        checkSame(scope.pixelRatio, 0);
        checkSame(scope.effectivePixelRatio, 1);
        compare(taken(heard), "pixelRatioChanged requestedPixelRatioChanged");
    }

    function test_bindingsFollowTheRatioInForce() {
        const scope = createOutside();
        observer.seen = Qt.binding(() => scope.effectivePixelRatio);
        checkSame(observer.seen, 1);
        scope.pixelRatio = 2.5;
        checkSame(observer.seen, 2.5);
        observer.seen = undefined;
    }

    function test_theRatioInForceIsForReading() {
        const scope = createOutside();
        compare(complaint(() => { scope.effectivePixelRatio = 2; }),
                "Cannot assign to read-only property \"effectivePixelRatio\"");
        checkSame(scope.effectivePixelRatio, 1);
    }
}
