import QtQuick
import Quorvane.Widget

// A small word about an amount.
Rectangle {
    id: badge

    required property string text
    required property widgetTheme theme

    implicitWidth: label.implicitWidth + 10
    implicitHeight: label.implicitHeight + 4
    radius: 4
    color: theme.badgeFill
    antialiasing: true

    ShrinkingText {
        id: label

        anchors.fill: parent
        anchors.leftMargin: 5
        anchors.rightMargin: 5
        anchors.topMargin: 2
        anchors.bottomMargin: 2
        implicitHeight: 11
        text: badge.text
        size: 10
        weight: Font.Medium
        color: badge.theme.warningText
    }
}
