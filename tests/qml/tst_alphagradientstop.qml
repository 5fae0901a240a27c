import QtQuick 2.15
import Korvel.ImageFx 1.0

TypeTestCase {
    name: "AlphaGradientStop"
    subject: Component { AlphaGradientStop {} }
    afterwards: ""
    properties: [
        { tag: "location", initial: 0, low: 0, high: 1 },
        { tag: "value", initial: 1, low: 0, high: 1 }
    ]
}
