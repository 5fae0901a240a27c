import QtQuick 2.15
import QtQuick.Layouts 1.15
import "catalogue"
import "theme"

// A property with its name, range, value, control and meaning.
ColumnLayout {
    id: root

    required property var modelData

    spacing: 4

    RowLayout {
        Layout.topMargin: Theme.spacing / 2
        spacing: Theme.spacing

        Text {
            text: root.modelData.title
            font.pixelSize: Theme.textSize
            font.bold: true
            color: Theme.text
        }

        Text {
            Layout.fillWidth: true
            text: root.modelData.range
            font.pixelSize: Theme.smallSize
            color: Theme.faint
            elide: Text.ElideRight
        }

        Text {
            objectName: root.modelData.name + ".text"
            text: root.modelData.text
            font.pixelSize: Theme.textSize
            color: Theme.text
        }
    }

    Loader {
        Layout.fillWidth: true
        Component.onCompleted: setSource(root.modelData.editor, { info: root.modelData })
    }

    Text {
        Layout.fillWidth: true
        text: root.modelData.sentence
        font.pixelSize: Theme.smallSize
        color: Theme.faint
        wrapMode: Text.WordWrap
    }
}
