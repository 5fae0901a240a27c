import QtQuick 2.15
import Korvel.ImageFx 1.0
import Korvel.ImageFx.Tests 1.0

// The laws that the list properties of all types share, on a list and four elements:
//   heard     the signals of an append and of a clear
//   followed  the signals of the owner when a listed element changes
ObjectTestCase {
    id: testCase

    name: "ListProperties"

    function init_data() {
        const effects = { list: "imageEffects", element: effect, property: "alpha" };
        const stops = { list: "gradientStops", element: stop, property: "value" };
        const row = (tag, owner, lists, followed) => Object.assign({
            tag: tag,
            owner: owner,
            heard: lists.list + "Changed" + (followed ? " " + followed : ""),
            followed: followed
        }, lists);
        return [
            row("PixelBuffer", pixelBuffer, effects, ""),
            row("BatchImageEffect", batch, effects, "updateRequired"),
            row("DistanceAlphaMask", distance, stops, "updateRequired"),
            row("HueAlphaMask", hue, stops, "updateRequired"),
            row("LuminanceAlphaMask", luminance, stops, "updateRequired")
        ];
    }

    QtObject {
        id: observer

        property var seen
    }

    Component { id: pixelBuffer; PixelBuffer {} }
    Component { id: batch; BatchImageEffect {} }
    Component { id: distance; DistanceAlphaMask {} }
    Component { id: hue; HueAlphaMask {} }
    Component { id: luminance; LuminanceAlphaMask {} }
    Component { id: effect; HSVImageEffect {} }
    Component { id: stop; AlphaGradientStop {} }

    function create(component) {
        return createTemporaryObject(component, testCase);
    }

    function createElements(row, count) {
        return Array.from({ length: count }, () => create(row.element));
    }

    function checkElements(list, elements) {
        compare(list.length, elements.length);
        elements.forEach((element, i) => checkSame(list[i], element));
    }

    function repeated(text, count) {
        return Array(count).fill(text).join(" ");
    }

    function test_newListIsEmpty(row) {
        checkElements(create(row.owner)[row.list], []);
    }

    function test_everyElementIsAppendedWithItsSignals(row) {
        const owner = create(row.owner);
        const elements = createElements(row, 3);
        const heard = record(owner);
        owner[row.list] = elements;
        compare(taken(heard), repeated(row.heard, 3));
        checkElements(owner[row.list], elements);
    }

    function test_anotherArrayReplacesTheElements(row) {
        const owner = create(row.owner);
        const elements = createElements(row, 4);
        owner[row.list] = elements.slice(0, 2);
        const heard = record(owner);
        owner[row.list] = elements.slice(2);
        compare(taken(heard), repeated(row.heard, 3));
        checkElements(owner[row.list], elements.slice(2));
    }

    function test_anEmptyArrayClears(row) {
        const owner = create(row.owner);
        owner[row.list] = createElements(row, 2);
        const heard = record(owner);
        owner[row.list] = [];
        compare(taken(heard), row.heard);
        checkElements(owner[row.list], []);
        owner[row.list] = [];
        compare(taken(heard), "");
    }

    function test_oneElementIsAListOfOne(row) {
        const owner = create(row.owner);
        const element = create(row.element);
        owner[row.list] = element;
        checkElements(owner[row.list], [element]);
    }

    function test_nullIsLeftOut(row) {
        const owner = create(row.owner);
        const element = create(row.element);
        const heard = record(owner);
        owner[row.list] = [null, element, null];
        compare(taken(heard), row.heard);
        checkElements(owner[row.list], [element]);
    }

    function test_anElementIsListedTwice(row) {
        const owner = create(row.owner);
        const element = create(row.element);
        owner[row.list] = [element, element];
        checkElements(owner[row.list], [element, element]);
    }

    function test_outsideTheListIsNothing(row) {
        const owner = create(row.owner);
        const elements = createElements(row, 2);
        owner[row.list] = elements;
        checkSame(Inspector.elementAt(owner, row.list, 1), elements[1]);
        [-1, 2, 99].forEach(index => {
            checkSame(owner[row.list][index], undefined);
            checkSame(Inspector.elementAt(owner, row.list, index), null);
        });
    }

    function test_bindingsToTheLengthFollow(row) {
        const owner = create(row.owner);
        observer.seen = Qt.binding(() => owner[row.list].length);
        compare(observer.seen, 0);
        owner[row.list] = createElements(row, 2);
        compare(observer.seen, 2);
        owner[row.list] = [];
        compare(observer.seen, 0);
        observer.seen = undefined;
    }

    function test_listedElementsAreFollowed(row) {
        const owner = create(row.owner);
        const elements = createElements(row, 2);
        owner[row.list] = elements;
        const heard = record(owner);
        elements[1][row.property] = 0.5;
        compare(taken(heard), row.followed);
        owner[row.list] = [];
        taken(heard);
        elements[1][row.property] = 0.25;
        compare(taken(heard), "");
    }

    function test_aDestroyedElementLeaves(row) {
        const owner = create(row.owner);
        const elements = createElements(row, 2);
        owner[row.list] = [elements[0], elements[1], elements[0]];
        const heard = record(owner);
        letGo(elements[0]);
        compare(taken(heard), row.followed);
        checkElements(owner[row.list], [elements[1]]);
    }

    function test_clearedElementsStayAlive(row) {
        const owner = create(row.owner);
        const element = create(row.element);
        owner[row.list] = [element];
        owner[row.list] = [];
        wait(0);
        element[row.property] = 0.5;
        checkSame(element[row.property], 0.5);
    }

    function test_otherObjectsAreNotListed(row) {
        const owner = create(row.owner);
        owner[row.list] = [observer];
        compare(owner[row.list].length, 0);
    }

    function test_elementsAreDeclared(row) {
        const element = row.element === effect ? "HSVImageEffect" : "AlphaGradientStop";
        const values = [0.25, 0.5];
        const text = values.map(value => element + " { " + row.property + ": " + value + " }");
        const owner = declare(row.tag + " { " + row.list + ": [" + text.join(",") + "] }");
        compare(owner[row.list].length, 2);
        values.forEach((value, i) => checkSame(owner[row.list][i][row.property], value));
        owner.destroy();
    }
}
