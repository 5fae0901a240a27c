import QtQuick 2.15

// One value out of a list of { text, value, sentence }; the first one is what it resets to.
PropertyInfo {
    id: root

    property var choices: []
    readonly property int current:
        effect ? choices.findIndex(choice => choice.value === effect[name]) : -1

    sentence: current < 0 ? "" : choices[current].sentence
    editor: Qt.resolvedUrl("../editors/ChoiceEditor.qml")

    function reset() {
        effect[name] = choices[0].value
    }
}
