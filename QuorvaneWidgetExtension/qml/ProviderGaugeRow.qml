import QtQuick
import Quorvane.Widget

// One provider in one line.
Item {
    id: row

    required property widgetProviderLine content
    required property widgetTheme theme
    required property real limitColumn

    implicitHeight: content.textSize * 1.5

    ProviderMarkChip {
        id: chip

        anchors.left: row.left
        anchors.verticalCenter: row.verticalCenter
        content: row.content.chip
    }

    ShrinkingText {
        id: name

        anchors.left: chip.right
        anchors.leftMargin: 8
        anchors.verticalCenter: row.verticalCenter
        width: Math.min(implicitWidth, row.width - chip.width - 8 - 6 - badge.width - 8 - value.width - limit.space)
        text: row.content.name
        size: row.content.textSize
        weight: Font.Medium
        color: row.theme.primaryText
        minimumScale: row.content.minimumScale
    }

    ProviderBasisBadge {
        id: badge

        anchors.left: name.right
        anchors.leftMargin: 6
        anchors.verticalCenter: row.verticalCenter
        width: visible ? implicitWidth : 0
        visible: text !== ""
        text: row.content.badge
        theme: row.theme
    }

    ShrinkingText {
        id: value

        anchors.right: limit.left
        anchors.rightMargin: limit.gap
        anchors.verticalCenter: row.verticalCenter
        // A figure too long for its column takes of the name's room.
        width: Math.max(row.content.valueColumn, leastWidth)
        text: row.content.value
        size: row.content.textSize
        color: row.theme.primaryText
        minimumScale: row.content.minimumScale
        isFigure: true
        isTrailing: true
    }

    Item {
        id: limit

        readonly property real gap: row.limitColumn > 0 ? 10 : 0
        readonly property real space: row.limitColumn + gap

        anchors.right: row.right
        anchors.verticalCenter: row.verticalCenter
        width: row.limitColumn
        height: capsule.height

        LimitCapsule {
            id: capsule

            anchors.left: parent.left
            anchors.right: parent.right
            visible: row.content.hasLimit
            fraction: row.content.limitFraction
            tint: row.content.limitColor
            track: row.theme.gaugeTrack
        }
    }
}
