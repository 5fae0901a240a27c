import QtQuick 2.15
import QtQuick.Layouts 1.15
import "catalogue"
import "theme"

// The gradient of a mask, and how to change it.
ColumnLayout {
    id: root

    property MaskInfo kind

    spacing: Theme.spacing

    GradientEditor {
        objectName: "mask.gradientStops"
        Layout.fillWidth: true
        Layout.fillHeight: true
        kind: root.kind
    }

    Text {
        Layout.fillWidth: true
        text: "Click adds a stop \u00b7 drag moves it \u00b7 drag out, right click or Delete removes it "
              + "\u00b7 wheel or arrows change it"
        font.pixelSize: Theme.smallSize
        color: Theme.faint
        elide: Text.ElideRight
    }
}
