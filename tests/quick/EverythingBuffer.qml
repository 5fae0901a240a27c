import QtQuick 2.15
import Korvel.ImageFx 1.0

// Every kind of pass that binds something of its own: tables, a mask's gradient, first passes,
// nested effects, a mask view and a mask.
PixelBuffer {
    id: buffer
    objectName: "buffer"
    width: 40
    height: 40
    sourceItem: Image { parent: buffer; source: "image://test/photo"; visible: false }
    mask: Image { parent: buffer; source: "image://test/mask"; visible: false }
    imageEffects: [
        BlurImageEffect { radius: 3 },
        BatchImageEffect {
            alpha: 0.9
            imageEffects: [
                LookupTableImageEffect { table: "qrc:/imagefx/lib/lut/fargo.png" },
                SharpenImageEffect { }
            ]
        },
        SelectiveSaturationImageEffect { red: 0.8; green: -0.5 },
        ExposureImageEffect { exposure: 0.3 },
        ColorFillImageEffect {
            id: masked
            color: "orange"
            blendMode: ImageEffect.Multiply
            alphaMask: DistanceAlphaMask {
                gradientStops: [
                    AlphaGradientStop { location: 0.2; value: 0 },
                    AlphaGradientStop { location: 1.0; value: 1 }
                ]
            }
        }
    ]
    Component.onCompleted: maskViewLayer = masked
}
