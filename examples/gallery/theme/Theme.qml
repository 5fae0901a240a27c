pragma Singleton
import QtQuick 2.15

// Greys without a tint, since a tinted one changes how the colours beside it look.
QtObject {
    readonly property color stage: "#3b3b3b"
    readonly property color panel: "#262626"
    readonly property color raised: "#333333"
    readonly property color control: "#404040"
    readonly property color hovered: "#4c4c4c"
    readonly property color line: "#1a1a1a"
    readonly property color edge: "#595959"
    readonly property color text: "#e4e4e4"
    readonly property color faint: "#a6a6a6"
    readonly property color disabled: "#6c6c6c"
    readonly property color mark: "#d0d0d0"
    readonly property color focus: "#7fb2e6"
    readonly property color warning: "#f0a070"

    readonly property int spacing: 8
    readonly property int margin: 16
    readonly property int radius: 3
    readonly property int controlHeight: 28

    readonly property int textSize: 13
    readonly property int smallSize: 11
    readonly property int titleSize: 18
}
