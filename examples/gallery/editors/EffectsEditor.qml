import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import "../catalogue"
import "../theme"

// The nested effects, each with its switch and its opacity.
ColumnLayout {
    id: root

    required property EffectsInfo info

    objectName: info.name
    spacing: 2

    Repeater {
        model: root.info.effect[root.info.name]

        RowLayout {
            id: row

            required property int index
            required property var modelData

            spacing: Theme.spacing

            Switch {
                objectName: `${root.info.name}.${row.index}.enabled`
                Layout.preferredWidth: 170
                text: row.modelData.name
                checked: row.modelData.enabled
                onToggled: row.modelData.enabled = checked
            }

            ResettingSlider {
                objectName: `${root.info.name}.${row.index}.alpha`
                Layout.fillWidth: true
                enabled: row.modelData.enabled
                resting: 1
                value: row.modelData.alpha
                onMoved: row.modelData.alpha = value
                onResetRequested: row.modelData.alpha = 1
            }
        }
    }
}
