import QtQuick 2.15

PropertyInfo {
    editor: Qt.resolvedUrl("../editors/TextEditor.qml")

    function reset() {
        effect[name] = ""
    }
}
