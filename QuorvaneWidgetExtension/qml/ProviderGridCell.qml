import QtQuick
import Quorvane.Widget

// One provider of many: the name, and the value under it.
Item {
    id: cell

    required property widgetProviderLine content
    required property widgetTheme theme

    implicitHeight: 25

    ProviderMarkChip {
        id: chip

        anchors.left: cell.left
        anchors.verticalCenter: cell.verticalCenter
        content: cell.content.chip
    }

    ShrinkingText {
        anchors.left: chip.right
        anchors.leftMargin: 7
        anchors.right: cell.right
        anchors.top: cell.top
        height: 12
        text: cell.content.name
        size: cell.content.textSize
        color: cell.theme.mutedText
        minimumScale: cell.content.minimumScale
    }

    ShrinkingText {
        anchors.left: chip.right
        anchors.leftMargin: 7
        anchors.right: cell.right
        anchors.bottom: cell.bottom
        height: 13
        text: cell.content.value
        size: cell.content.textSize
        weight: Font.Medium
        color: cell.theme.primaryText
        minimumScale: cell.content.minimumScale
        isFigure: true
    }
}
