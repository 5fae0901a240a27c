import QtQuick 2.15
import Korvel.ImageFx 1.0

MaskTestCase {
    name: "DistanceAlphaMask"
    maskId: "ko.orvanto.alphamask.Distance"
    subject: Component { DistanceAlphaMask {} }
}
