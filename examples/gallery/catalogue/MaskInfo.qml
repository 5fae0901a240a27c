import QtQuick 2.15
import Korvel.ImageFx 1.0

// A kind of mask, or none, and what the two ends of its gradient stand for.
QtObject {
    property string title
    property string sentence
    property string start
    property string end
    property var colors: []
    property AlphaMask mask
}
