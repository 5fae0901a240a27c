import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import QtQuick.Window 2.15
import "catalogue"
import "theme"

// What the effect does, and a control for each of its properties.
Rectangle {
    id: root

    property EffectEntry entry
    readonly property Item focusItem: Window.activeFocusItem

    color: Theme.panel

    // The keyboard reaches what is scrolled out of view, too.
    onFocusItemChanged: {
        if (focusItem && content.contains(content.mapFromItem(focusItem, 0, 0))) {
            const top = flickable.contentItem.mapFromItem(focusItem, 0, 0).y
            const least = top + focusItem.height + Theme.margin - flickable.height
            flickable.contentY = Math.max(0, least, Math.min(flickable.contentY, top - Theme.margin))
        }
    }

    Flickable {
        id: flickable

        anchors.fill: parent
        contentHeight: content.height + 2 * Theme.margin
        clip: true
        boundsBehavior: Flickable.StopAtBounds

        ScrollBar.vertical: ScrollBar {}

        ColumnLayout {
            id: content

            x: Theme.margin
            y: Theme.margin
            width: parent.width - 2 * Theme.margin
            spacing: Theme.spacing

            RowLayout {
                Text {
                    Layout.fillWidth: true
                    text: root.entry.title
                    font.pixelSize: Theme.titleSize
                    color: Theme.text
                    elide: Text.ElideRight
                }

                Switch {
                    objectName: "enabled"
                    checked: root.entry.effect.enabled
                    onToggled: root.entry.effect.enabled = checked

                    ToolTip.visible: hovered
                    ToolTip.text: "Switches the effect on and off"
                }
            }

            Text {
                Layout.fillWidth: true
                text: root.entry.sentence
                font.pixelSize: Theme.textSize
                color: Theme.text
                wrapMode: Text.WordWrap
            }

            Text {
                objectName: "effectId"
                text: root.entry.effect.effectId
                font.family: "monospace"
                font.pixelSize: Theme.smallSize
                color: Theme.faint
            }

            Repeater {
                model: root.entry.properties

                PropertyRow { Layout.fillWidth: true }
            }

            Rectangle {
                Layout.fillWidth: true
                Layout.topMargin: Theme.spacing
                implicitHeight: 1
                color: Theme.control
            }

            Repeater {
                model: root.entry.commonProperties

                PropertyRow { Layout.fillWidth: true }
            }
        }
    }
}
