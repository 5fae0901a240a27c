import QtQuick 2.15
import Korvel.ImageFx 1.0

MaskTestCase {
    name: "LuminanceAlphaMask"
    maskId: "ko.orvanto.alphamask.Luminance"
    subject: Component { LuminanceAlphaMask {} }
}
