import QtQuick 2.15

// A list of nested effects; it is reset by switching all of them off.
PropertyInfo {
    range: "any effects \u00b7 neutral: none"
    text: effect ? `${effect[name].length} effects` : ""
    editor: Qt.resolvedUrl("../editors/EffectsEditor.qml")

    function reset() {
        for (let i = 0; i < effect[name].length; ++i) {
            effect[name][i].enabled = false
        }
    }
}
