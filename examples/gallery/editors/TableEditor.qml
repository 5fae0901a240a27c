import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import "../catalogue"
import "../theme"

// A lookup table: one of the presets, or the address of any other; below it the table itself.
ColumnLayout {
    id: root

    required property TableInfo info
    readonly property string value: info.effect[info.name]

    spacing: Theme.spacing

    ComboBox {
        objectName: root.info.name + ".preset"
        Layout.fillWidth: true
        model: root.info.presets
        textRole: "text"
        displayText: currentIndex < 0 ? "Other" : currentText
        currentIndex: root.info.presets.findIndex(preset => preset.value === root.value)
        onActivated: function(index) {
            root.info.effect[root.info.name] = root.info.presets[index].value
        }
    }

    TextField {
        objectName: root.info.name
        Layout.fillWidth: true
        text: root.value
        placeholderText: "file:, qrc: or data: address"
        onEditingFinished: root.info.effect[root.info.name] = text
    }

    Image {
        Layout.fillWidth: true
        Layout.preferredHeight: 14
        visible: status === Image.Ready
        source: root.value
        fillMode: Image.Stretch
        smooth: false
    }
}
