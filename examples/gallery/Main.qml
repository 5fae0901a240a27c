import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import "catalogue"
import "theme"

ApplicationWindow {
    id: window

    readonly property EffectEntry entry: catalogue.entries[effectList.currentIndex]
    readonly property QtObject effect: entry.effect

    width: 1280
    height: 800
    minimumWidth: 1120
    minimumHeight: 640
    visible: true
    title: `${entry.title} \u2013 effect gallery`
    color: Theme.stage

    Catalogue { id: catalogue }

    Exports { id: pictureExports }

    header: GalleryToolBar {
        id: toolBar

        exports: pictureExports
        onResetRequested: window.entry.reset()
        onExportRequested: exports.start(photograph, window.effect,
                                         `${photographName} - ${window.entry.title.toLowerCase()}`)
    }

    RowLayout {
        anchors.fill: parent
        spacing: 1

        EffectList {
            id: effectList

            Layout.preferredWidth: 200
            Layout.fillHeight: true
            entries: catalogue.entries
            focus: true
        }

        ColumnLayout {
            spacing: 1

            BeforeAfter {
                Layout.fillWidth: true
                Layout.fillHeight: true
                photograph: toolBar.photograph
                effect: window.entry.effect
                comparing: toolBar.comparing
                showsMask: maskPanel.showsMask
            }

            MaskPanel {
                id: maskPanel

                Layout.fillWidth: true
                entry: window.entry
            }
        }

        EffectPanel {
            Layout.preferredWidth: 380
            Layout.fillHeight: true
            entry: window.entry
        }
    }
}
