import QtQuick 2.15

// Items of every kind, drawn before and after what is put into the middle.
Item {
    default property alias middle: place.data
    property alias photo: picture

    Rectangle {
        width: 160
        height: 40
        gradient: Gradient {
            GradientStop { position: 0; color: "red" }
            GradientStop { position: 1; color: "blue" }
        }
    }
    Rectangle { x: 4; y: 4; width: 30; height: 20; color: "lime"; opacity: 0.5; radius: 7 }
    Image { id: picture; x: 100; y: 40; width: 60; height: 40; source: "image://test/photo" }
    Item { id: place; x: 60; y: 40 }
    Text { x: 4; y: 20; text: "before, after"; color: "white" }
    ShaderEffect { y: 40; width: 60; height: 40; property variant source: picture }
    Item {
        x: 10; y: 84; width: 30; height: 30
        clip: true
        Rectangle { x: 5; y: 5; width: 30; height: 30; rotation: 30; color: "navy"; opacity: 0.7 }
    }
    Item {
        x: 50; y: 84; width: 30; height: 30
        clip: true
        rotation: 20
        Rectangle { x: -10; width: 30; height: 50; color: "#80ff8000" }
    }
    Item {
        x: 90; y: 84; width: 30; height: 30
        layer.enabled: true
        opacity: 0.6
        Rectangle { x: 5; y: 5; width: 30; height: 30; color: "purple"; border.width: 3 }
        Text { text: "in a layer" }
    }
    Image {
        x: 125; y: 84; width: 30; height: 30
        source: "image://test/mask"
        mipmap: true
        opacity: 0.4
    }
}
