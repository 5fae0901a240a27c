import QtQuick 2.15

PropertyInfo {
    property color initial

    text: effect ? String(effect[name]) : ""
    range: `any colour \u00b7 default ${initial}`
    editor: Qt.resolvedUrl("../editors/ColorEditor.qml")

    function reset() {
        effect[name] = initial
    }
}
