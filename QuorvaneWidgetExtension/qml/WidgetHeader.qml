import QtQuick
import Quorvane.Widget

// The mark, the product's name, and what the widget tells of.
Item {
    id: header

    required property widgetContent content
    required property widgetTheme theme
    property real markSize: content.compactHeader ? 26 : 28

    implicitHeight: mark.size

    QuorvaneWidgetMark {
        id: mark

        anchors.left: header.left
        anchors.verticalCenter: header.verticalCenter
        size: header.markSize
        theme: header.theme
    }

    Column {
        anchors.left: mark.right
        anchors.leftMargin: header.content.compactHeader ? 7 : 8
        anchors.right: header.right
        anchors.verticalCenter: header.verticalCenter

        ShrinkingText {
            width: parent.width
            text: header.content.productName
            size: header.content.compactHeader ? 12 : 13
            weight: Font.DemiBold
            color: header.theme.primaryText
            minimumScale: 0.85
        }

        ShrinkingText {
            width: parent.width
            text: header.content.title
            size: header.content.compactHeader ? 10 : 11
            color: header.theme.mutedText
            minimumScale: 0.85
        }
    }
}
