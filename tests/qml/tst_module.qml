import QtQuick 2.15
import QtTest 1.2

// What the module Korvel.ImageFx offers, seen from documents that import it.
TestCase {
    id: testCase

    name: "Module"

    function create(type, version) {
        const text = "import Korvel.ImageFx " + version + "; " + type + " {}";
        return Qt.createQmlObject(text, testCase);
    }

    // Why a document with that type in it does not load; empty if it does.
    function complaint(type, version) {
        try {
            create(type, version).destroy();
        } catch (error) {
            return error.qmlErrors[0].message;
        }
        return "";
    }

    function test_typesAreCreated_data() {
        return ["PixelBuffer", "SharpenImageEffect", "GrayScaleImageEffect",
                "BrightnessContrastImageEffect", "ChannelShiftImageEffect", "HSVImageEffect",
                "LookupTableImageEffect", "BatchImageEffect", "BlurImageEffect",
                "ExposureImageEffect", "ColorFillImageEffect", "SelectiveSaturationImageEffect",
                "AlphaGradientStop", "DistanceAlphaMask", "HueAlphaMask",
                "LuminanceAlphaMask", "ImageEffectExporter"].map(type => ({ tag: type }));
    }

    function test_typesAreCreated(row) {
        const object = create(row.tag, "1.0");
        verify(String(object).startsWith("ko::imagefx::" + row.tag + "("), String(object));
        object.destroy();
    }

    function test_baseTypesAreAbstract_data() {
        return [{ tag: "ImageEffect" }, { tag: "AlphaMask" }];
    }

    function test_baseTypesAreAbstract(row) {
        compare(complaint(row.tag, "1.0"), row.tag + " is abstract");
    }

    function test_theRenderSideIsNotOffered_data() {
        return [{ tag: "ImageEffectState" }, { tag: "AlphaMaskState" }, { tag: "ImageEffectPass" },
                { tag: "PixelBufferRenderer" }, { tag: "ExportJob" }];
    }

    function test_theRenderSideIsNotOffered(row) {
        compare(complaint(row.tag, "1.0"), row.tag + " is not a type");
    }

    function test_thereIsNoOtherVersion_data() {
        return [{ tag: "1.1" }, { tag: "2.0" }];
    }

    function test_thereIsNoOtherVersion(row) {
        compare(complaint("BlurImageEffect", row.tag),
                "module \"Korvel.ImageFx\" version " + row.tag + " is not installed");
    }
}
