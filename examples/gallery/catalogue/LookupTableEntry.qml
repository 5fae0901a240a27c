import QtQuick 2.15
import Korvel.ImageFx 1.0

EffectEntry {
    title: "Lookup table"
    sentence: "A colour grade: each channel's level is looked up in a table of 256 pixels."
    effect: LookupTableImageEffect { table: "qrc:/imagefx/lib/lut/pulp-fiction.png" }
    properties: [
        TableInfo {
            name: "table"
            title: "Table"
            sentence: "Where the table comes from: a picture of 256 \u00d7 1 pixels."
        }
    ]
}
