import QtQuick 2.15
import QtQuick.Controls 2.15

// The button of the exports. A button that is off does not see the mouse, so what it has to say
// then comes from the item around it.
Item {
    id: root

    required property Exports exports

    signal clicked()

    objectName: "export.place"
    implicitWidth: button.implicitWidth
    implicitHeight: button.implicitHeight

    ToolTip.visible: hover.hovered
    ToolTip.text: exports.possible
                  ? `At full size to ${exports.folder.path}`
                  : `${exports.program} is missing beside this program`

    HoverHandler { id: hover }

    Button {
        id: button

        objectName: "export"
        anchors.fill: parent
        enabled: root.exports.possible
        text: "Export"
        onClicked: root.clicked()
    }
}
