import QtQuick 2.15
import QtQuick.Controls 2.15
import "../catalogue"

ComboBox {
    required property ChoiceInfo info

    objectName: info.name
    model: info.choices
    textRole: "text"
    currentIndex: info.current
    onActivated: function(index) { info.effect[info.name] = info.choices[index].value }
}
