import QtQuick 2.15

// The source of a lookup table, with the tables that the library carries as a list. An effect that
// has had a table keeps one, so what it is reset to is a table that changes nothing.
PropertyInfo {
    readonly property var presets: [
        { text: "Identity", value: "qrc:/gallery/identity.png" },
        preset("American Hustle", "american-hustle"),
        preset("Fargo", "fargo"),
        preset("Grand Budapest Hotel", "grand-budapest-hotel"),
        preset("Interstellar", "interstellar"),
        preset("Little Miss Sunshine", "little-miss-sunshine"),
        preset("Pulp Fiction", "pulp-fiction"),
    ]

    range: "file, resource or data URL \u00b7 neutral: identity"
    editor: Qt.resolvedUrl("../editors/TableEditor.qml")

    function preset(text, file) {
        return { text: text, value: `qrc:/imagefx/lib/lut/${file}.png` }
    }

    function reset() {
        effect[name] = presets[0].value
    }
}
