import QtQuick 2.15
import Korvel.ImageFx 1.0
import Korvel.ImageFx.Tests 1.0

EffectTestCase {
    name: "LookupTableImageEffect"
    effectId: "ko.orvanto.imageeffect.LUT"
    subject: Component { LookupTableImageEffect {} }
    own: [
        { tag: "table", initial: "", values: [preset("fargo"), presetFile, preset("interstellar")] }
    ]

    readonly property string both: "tableChanged updateRequired"
    readonly property string presetFolder: "../../imagefx/lib/lut/"
    readonly property string presetFile: Qt.resolvedUrl(presetFolder + "fargo.png")
    readonly property string photograph: Qt.resolvedUrl("../../examples/photographs/room.jpg")

    function preset(file) {
        return "qrc:/imagefx/lib/lut/" + file + ".png";
    }

    function test_presetsLoad_data() {
        return ["american-hustle", "fargo", "grand-budapest-hotel", "interstellar",
                "little-miss-sunshine", "pulp-fiction"].map(file => ({ tag: file }));
    }

    function test_presetsLoad(row) {
        const effect = create();
        verify(Inspector.isNeutral(effect));
        effect.table = preset(row.tag);
        verify(!Inspector.isNeutral(effect));
    }

    function test_whatDoesNotLoadLeavesNoTable_data() {
        return [
            { tag: "a photograph", url: photograph, complaint: "1200x1799" },
            { tag: "no file", url: "file:///nowhere.png", complaint: "0x0" },
            { tag: "no resource", url: "qrc:/nowhere.png", complaint: "0x0" },
            { tag: "no picture", url: "data:image/png;base64,AAAA", complaint: "0x0" }
        ];
    }

    function test_whatDoesNotLoadLeavesNoTable(row) {
        const effect = create({ table: preset("fargo") });
        const heard = record(effect);
        Inspector.expectCritical("Invalid image dimensions " + row.complaint);
        effect.table = row.url;
        compare(taken(heard), both);
        checkSame(effect.table, row.url);
        verify(Inspector.isNeutral(effect));
        effect.table = row.url;
        compare(taken(heard), "");
    }

    function test_whatIsNotSupportedKeepsTheTable_data() {
        return [
            { tag: "web page", url: "http://localhost/a.png", complaint: "url scheme http" },
            { tag: "empty", url: "", complaint: "url scheme " },
            { tag: "JPEG data", url: "data:image/jpeg;base64,AAAA", complaint: "data URL" }
        ];
    }

    function test_whatIsNotSupportedKeepsTheTable(row) {
        const effect = create({ table: preset("fargo") });
        const heard = record(effect);
        Inspector.expectCritical("Unsupported " + row.complaint);
        effect.table = row.url;
        compare(taken(heard), both);
        checkSame(effect.table, row.url);
        verify(!Inspector.isNeutral(effect));
    }

    function test_aRelativeUrlIsSeenFromTheDocument() {
        const effect = create();
        effect.table = presetFolder + "fargo.png";
        checkSame(effect.table, presetFile);
        verify(!Inspector.isNeutral(effect));
    }

    function test_aFileBecomesADataUrlThatLoads() {
        const effect = create();
        const heard = record(effect);
        const url = effect.toDataUrl(presetFile);
        verify(String(url).startsWith("data:image/png;base64,"));
        compare(taken(heard), "");
        checkSame(effect.table, "");
        effect.table = url;
        compare(taken(heard), both);
        checkSame(effect.table, String(url));
        verify(!Inspector.isNeutral(effect));
    }

    function test_nothingElseBecomesADataUrl_data() {
        return [{ tag: preset("fargo") }, { tag: photograph }, { tag: "file:///nowhere.png" },
                { tag: "" }];
    }

    function test_nothingElseBecomesADataUrl(row) {
        checkSame(create().toDataUrl(row.tag), "");
    }
}
