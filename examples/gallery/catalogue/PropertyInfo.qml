import QtQuick 2.15

// One property of an effect: what to call it, what it does and with which control it is edited.
QtObject {
    // Set by the entry that lists the property.
    property QtObject effect
    property string name
    property string title
    property string sentence
    // Range and neutral value, in words.
    property string range
    // The present value, in words.
    property string text
    // The control: a component with a property `info`, which is this object.
    property url editor

    function reset() {}
}
