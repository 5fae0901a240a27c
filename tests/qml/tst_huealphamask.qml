import QtQuick 2.15
import Korvel.ImageFx 1.0

MaskTestCase {
    name: "HueAlphaMask"
    maskId: "ko.orvanto.alphamask.Hue"
    subject: Component { HueAlphaMask {} }
}
