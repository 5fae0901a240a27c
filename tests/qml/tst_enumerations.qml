import QtQuick 2.15
import QtTest 1.2
import Korvel.ImageFx 1.0

// The values that QML text names: of the base type and of those that inherit it.
TestCase {
    name: "Enumerations"

    function rows(names) {
        return names.map((name, number) => ({ tag: name, number: number }));
    }

    function test_blendModes_data() {
        return rows(["Normal", "Add", "Subtract", "Difference", "Multiply", "Divide", "Screen",
                     "Overlay", "HardLight", "SoftLight", "LinearLight", "ColorDodge", "ColorBurn",
                     "LinearBurn", "LightenOnly", "DarkenOnly"]);
    }

    function test_blendModes(row) {
        compare(ImageEffect[row.tag], row.number);
        compare(BlurImageEffect[row.tag], row.number);
    }

    function test_gradientInterpolations_data() {
        return rows(["ConstantInterpolation", "LinearInterpolation", "HermiteInterpolation"]);
    }

    function test_gradientInterpolations(row) {
        compare(AlphaMask[row.tag], row.number);
        compare(HueAlphaMask[row.tag], row.number);
    }

    function test_namesAreDeclared() {
        const effect = Qt.createQmlObject(
            "import Korvel.ImageFx 1.0; BlurImageEffect { blendMode: ImageEffect.Overlay; "
            + "alphaMask: HueAlphaMask { gradientInterpolation: AlphaMask.LinearInterpolation } }",
            this);
        compare(effect.blendMode, 7);
        compare(effect.alphaMask.gradientInterpolation, 1);
        effect.destroy();
    }
}
