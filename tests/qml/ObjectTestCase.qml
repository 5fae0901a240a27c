import QtQuick 2.15
import QtTest 1.2
import Korvel.ImageFx.Tests 1.0

// What tests of the library's objects need: their signals in order, comparison without tolerance.
TestCase {
    id: testCase

    // An object as QML text declares it, such as "HueAlphaMask { enabled: false }".
    function declare(text) {
        const imports = "import QtQuick 2.15; import Korvel.ImageFx 1.0; ";
        return Qt.createQmlObject(imports + text, testCase);
    }

    // Collects the names of the signals that the object sends from now on.
    function record(object) {
        const heard = [];
        Inspector.signalNames(object).forEach(
            name => object[name].connect(() => { heard.push(name); }));
        return heard;
    }

    // The names collected since the last call.
    function taken(heard) {
        return heard.splice(0, heard.length).join(" ");
    }

    // Stricter than compare(), which forgives numbers as much as a setter does.
    function checkSame(actual, expected) {
        const same = actual === expected
            || (actual !== null && typeof actual === "object"
                && String(actual) === String(expected));
        verify(same, actual + " instead of " + expected);
    }

    // The message of the exception that the function throws; empty when it throws none.
    function complaint(action) {
        try {
            action();
        } catch (error) {
            return error.qmlErrors ? error.qmlErrors[0].message : error.message;
        }
        return "";
    }

    // Waits until objects that were told to go are gone.
    function letGo(object) {
        object.destroy();
        wait(0);
    }
}
