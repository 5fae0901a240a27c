import QtQuick 2.15
import QtQuick.Controls 2.15
import "../catalogue"

TextField {
    required property TextInfo info

    objectName: info.name
    text: info.effect[info.name]
    onTextEdited: info.effect[info.name] = text
}
