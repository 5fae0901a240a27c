import QtQuick 2.15
import Korvel.Core 1.0

RenderScope {
    id: scope

    property int changes: 0
    property int requests: 0
    property real sideInPixels: 10 * scope.effectivePixelRatio

    onPixelRatioChanged: ++scope.changes
    onRequestedPixelRatioChanged: ++scope.requests

    Item {
        objectName: "inside"
    }
}
