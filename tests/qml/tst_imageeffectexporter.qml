import QtQuick 2.15
import QtTest 1.2
import Korvel.ImageFx 1.0
import Korvel.ImageFx.Tests 1.0

// The exporter as QML uses it, with the tool that lies beside the test program.
TypeTestCase {
    id: testCase

    readonly property url photograph: Qt.resolvedUrl("../../examples/photographs/room.jpg")
    readonly property int longestExport: 30000

    name: "ImageEffectExporter"
    subject: Component { ImageEffectExporter {} }
    afterwards: ""
    properties: [
        { tag: "source", initial: "", values: [photograph, "http://localhost/a.png"] }
    ]
    others: ["imageEffects"]

    SignalSpy {
        id: finished

        signalName: "exportFinished"
    }

    SignalSpy {
        id: failed

        signalName: "exportFailed"
    }

    Component { id: effect; HSVImageEffect { hue: 0.5 } }
    Component { id: picture; Image { cache: false } }

    Component {
        id: declared

        ImageEffectExporter {
            property var heard: []

            imageEffects: [ GrayScaleImageEffect {}, BlurImageEffect { radius: 3 } ]
            onExportFinished: (source, target) => { heard = [source, target]; }
        }
    }

    function createListened(values) {
        const exporter = create(values);
        listenTo(exporter);
        return exporter;
    }

    function listenTo(exporter) {
        [finished, failed].forEach(spy => {
            spy.target = exporter;
            spy.clear();
        });
    }

    function loaded(url) {
        const image = createTemporaryObject(picture, testCase, { source: url });
        compare(image.status, Image.Ready);
        return image;
    }

    function test_signalsAreDeclaredInThisOrder() {
        compare(Inspector.signalNames(create()),
                ["sourceChanged", "imageEffectsChanged", "exportFinished", "exportFailed"]);
    }

    function test_effectsAreAListThatSignalsItsChanges() {
        const exporter = create();
        const effects = Array.from({ length: 3 }, () => createTemporaryObject(effect, testCase));
        const heard = record(exporter);
        compare(exporter.imageEffects.length, 0);
        exporter.imageEffects = [];
        compare(taken(heard), "");
        exporter.imageEffects = [effects[0], null, effects[1], effects[0]];
        compare(taken(heard), "imageEffectsChanged imageEffectsChanged imageEffectsChanged");
        compare(exporter.imageEffects.length, 3);
        [0, 1, 0].forEach((index, i) => checkSame(exporter.imageEffects[i], effects[index]));
        [-1, 3, 99].forEach(
            index => checkSame(Inspector.elementAt(exporter, "imageEffects", index), null));
        exporter.imageEffects = effects[2];
        compare(taken(heard), "imageEffectsChanged imageEffectsChanged");
        checkSame(exporter.imageEffects[0], effects[2]);
        exporter.imageEffects = [];
        compare(taken(heard), "imageEffectsChanged");
        compare(exporter.imageEffects.length, 0);
        effects[2].hue = 0.25;
        checkSame(effects[2].hue, 0.25);
    }

    function test_aDestroyedEffectLeaves() {
        const exporter = create();
        const effects = Array.from({ length: 2 }, () => createTemporaryObject(effect, testCase));
        exporter.imageEffects = effects;
        letGo(effects[0]);
        compare(exporter.imageEffects.length, 1);
        checkSame(exporter.imageEffects[0], effects[1]);
    }

    function test_exportsToFilesOfTheirOwn() {
        const exporter = createListened({ source: photograph });
        exporter.exportToFile();
        exporter.exportToFile("", "png");
        tryCompare(finished, "count", 2, longestExport);
        compare(failed.count, 0);
        const names = finished.signalArguments.map(args => {
            checkSame(String(args[0]), String(photograph));
            compare(loaded(args[1]).implicitWidth, 1200);
            return String(args[1]).replace(/.*\//, "");
        });
        const pattern = /^[0-9a-f]{8}(-[0-9a-f]{4}){2}-[0-9a-f]\.(jpg|png)$/;
        names.forEach(file => verify(pattern.test(file), file));
        compare(names.map(file => file.slice(-3)).sort(), ["jpg", "png"]);
    }

    function test_aDeclaredExporterTellsItsHandler() {
        const exporter = createTemporaryObject(declared, testCase);
        compare(exporter.imageEffects.length, 2);
        exporter.source = photograph;
        exporter.exportToFile();
        compare(exporter.heard.length, 0);
        tryVerify(() => exporter.heard.length === 2, longestExport);
        checkSame(String(exporter.heard[0]), String(photograph));
        compare(loaded(exporter.heard[1]).implicitHeight, 1799);
    }

    function test_failuresTellSourceAndTarget_data() {
        return [
            { tag: "no such picture", source: "file:///nowhere/a.png", target: "file:///nowhere/b.png",
              complaint: "Image export failed with code 3" },
            { tag: "no way to download", source: "nowhere:a.png", target: "file:///nowhere/b.png",
              complaint: "Failed to download nowhere:a.png with code 301" },
            { tag: "no local target", source: photograph, target: "http://localhost/b.png",
              complaint: "Image export failed with code 2" }
        ];
    }

    function test_failuresTellSourceAndTarget(row) {
        const exporter = createListened({ source: row.source });
        Inspector.expectCritical(row.complaint);
        exporter.exportToFile(row.target);
        tryCompare(failed, "count", 1, longestExport);
        compare(finished.count, 0);
        const [source, target] = failed.signalArguments[0];
        compare([String(source), String(target)], [String(row.source), row.target]);
    }
}
