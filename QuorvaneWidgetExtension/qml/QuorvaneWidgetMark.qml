import QtQuick
import Quorvane.Widget

// The product's mark on its badge.
Item {
    id: mark

    required property real size
    required property widgetTheme theme

    implicitWidth: size
    implicitHeight: size

    Rectangle {
        anchors.fill: parent
        radius: width / 2
        color: mark.theme.honeyWash
        antialiasing: true
    }

    Rectangle {
        anchors.fill: parent
        anchors.margins: mark.size * 0.08
        radius: width / 2
        color: mark.theme.mascotBadge
        border.color: mark.theme.markRim
        border.width: 1
        antialiasing: true
    }

    PictureItem {
        anchors.fill: parent
        anchors.margins: mark.size * 0.18
        source: ":/quorvane/widget/quorvane-menubar.svg"
        color: mark.theme.markInk
    }
}
