import QtQuick 2.15
import Korvel.ImageFx.Tests 1.0

// The laws that hold for every property of every type. A test names its type and lists the
// properties; what is particular to the type it adds as test functions of its own.
ObjectTestCase {
    id: testCase

    // Makes the object under test. The test's name is that of the type.
    property Component subject

    // A row for each property that holds a plain value:
    //   tag      its name
    //   initial  its default
    //   values   values to write, each different from the one before and the first one from the
    //            default; left out for a number
    //   low, high  the range of a number that is clamped
    //   literal  the first of the values as QML text, where it is not that of a script
    //   heard    the signals of a change, with blanks between them
    property var properties: []

    // The properties that are tested in another way.
    property var others: []

    // What follows a property's own signal unless its row says otherwise.
    property string afterwards: " updateRequired"

    QtObject {
        id: observer

        property var seen
        property var wanted
    }

    function create(values) {
        return createTemporaryObject(subject, testCase, values === undefined ? {} : values);
    }

    function heardOf(row) {
        return row.heard === undefined ? row.tag + "Changed" + afterwards : row.heard;
    }

    function initialOf(row) {
        return typeof row.initial === "number" ? Math.fround(row.initial) : row.initial;
    }

    // What to write to a property one after the other, what it then reads, and whether it signals.
    function steps(row) {
        const list = [];
        const step = (write, reads, signals) => {
            list.push({ write: write, reads: reads, signals: signals });
        };
        const valueSteps = () => row.values.forEach(value => {
            step(value, value, true);
            step(value, value, false);
        });
        const numberSteps = () => {
            const clamped = row.low !== undefined;
            const middle = clamped ? row.low + 0.75 * (row.high - row.low) : 0.75;
            if (row.initial === 0) {
                step(0.000001, Math.fround(0.000001), true);
            }
            step(middle, middle, true);
            step(middle, middle, false);
            step(middle * 1.000005, middle, false);
            step(middle * 1.00002, Math.fround(middle * 1.00002), true);
            step(clamped ? row.high + 1 : 7, clamped ? row.high : 7, true);
            step(clamped ? row.high + 2 : 7, clamped ? row.high : 7, false);
            step(clamped ? row.low - 1 : -3, clamped ? row.low : -3, true);
            step(clamped ? row.low : -3, clamped ? row.low : -3, false);
        };

        step(row.initial, initialOf(row), false);
        if (row.values === undefined) {
            numberSteps();
        } else {
            valueSteps();
        }
        return list;
    }

    function firstChange(row) {
        return steps(row).find(step => step.signals);
    }

    function test_everyPropertyIsTested() {
        const names = properties.map(row => row.tag).concat(others);
        compare(Inspector.propertyNames(create()).sort(), names.sort());
    }

    function test_newObjectHasDefaults_data() {
        return properties;
    }

    function test_newObjectHasDefaults(row) {
        checkSame(create()[row.tag], initialOf(row));
    }

    function test_writesAreStoredAndChangesSignalOnce_data() {
        return properties;
    }

    function test_writesAreStoredAndChangesSignalOnce(row) {
        const object = create();
        const heard = record(object);
        steps(row).forEach(step => {
            object[row.tag] = step.write;
            checkSame(object[row.tag], step.reads);
            compare(taken(heard), step.signals ? heardOf(row) : "", "after writing " + step.write);
        });
    }

    function test_bindingsFollowAndAreFollowed_data() {
        return properties;
    }

    function test_bindingsFollowAndAreFollowed(row) {
        const object = create();
        const change = firstChange(row);
        observer.wanted = object[row.tag];
        object[row.tag] = Qt.binding(() => observer.wanted);
        observer.seen = Qt.binding(() => object[row.tag]);
        observer.wanted = change.write;
        checkSame(object[row.tag], change.reads);
        checkSame(observer.seen, change.reads);
        observer.seen = undefined;
    }

    function test_propertiesAreDeclared_data() {
        return properties;
    }

    function test_propertiesAreDeclared(row) {
        const change = firstChange(row);
        const literal = row.literal === undefined ? JSON.stringify(change.write) : row.literal;
        const object = declare(name + " { " + row.tag + ": " + literal + " }");
        checkSame(object[row.tag], change.reads);
        object.destroy();
    }
}
