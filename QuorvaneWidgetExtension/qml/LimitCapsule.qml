import QtQuick

// How much of a limit is used.
Rectangle {
    id: capsule

    required property real fraction
    required property color tint
    required property color track

    implicitHeight: 6
    radius: height / 2
    color: track
    antialiasing: true

    Rectangle {
        anchors.left: parent.left
        anchors.top: parent.top
        anchors.bottom: parent.bottom
        width: parent.width * capsule.fraction
        radius: Math.min(width, height) / 2
        color: capsule.tint
        antialiasing: true
    }
}
