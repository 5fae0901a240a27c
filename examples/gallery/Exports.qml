import QtQuick 2.15
import Korvel.ImageFx 1.0
import Gallery 1.0

// Exports into the user's folder for pictures; several exports may run. All it has to tell is in its
// properties.
QtObject {
    id: root

    readonly property string program: "korvel-image-exporter"
    // Looked for once: a program does not come while the application runs.
    readonly property bool possible: folder.hasProgram()
    // The file names of what runs.
    property var running: []
    // What went wrong since the last start, in words.
    property string failure
    // The file of the export that ended last.
    property url result

    // A program that does not start reports nothing, so a long silence is told instead.
    property int patience: 30000 // ms
    property bool silent: false

    readonly property string progress: {
        if (running.length === 0) {
            return ""
        }
        const what = running.length === 1 ? running[0] : `${running.length} pictures`
        return silent ? `No answer from ${program} yet` : `Exporting ${what} \u2026`
    }

    readonly property ExportFolder folder: ExportFolder {}

    readonly property ImageEffectExporter exporter: ImageEffectExporter {
        onExportFinished: function(source, target) {
            root.end(target)
            root.result = target
        }
        onExportFailed: function(source, target) {
            root.end(target)
            root.folder.giveBack(target)
            root.failure = `Could not export ${root.nameOf(target)}`
        }
    }

    readonly property Timer timer: Timer {
        interval: root.patience
        onTriggered: root.silent = true
    }

    function start(source, effect, name) {
        failure = ""
        if (!folder.hasProgram()) {
            failure = `${program} is missing beside this program`
            return
        }
        const target = folder.take(name)
        if (String(target) === "") {
            failure = `There is no writing to ${folder.path}`
            return
        }
        exporter.source = source
        exporter.imageEffects = [effect]
        exporter.exportToFile(target)
        running = running.concat(nameOf(target))
        listen()
    }

    function end(target) {
        const name = nameOf(target)
        running = running.filter(other => other !== name)
        listen()
    }

    function listen() {
        silent = false
        timer.running = false
        timer.running = running.length > 0
    }

    function nameOf(file) {
        return decodeURIComponent(String(file).replace(/.*\//, ""))
    }
}
