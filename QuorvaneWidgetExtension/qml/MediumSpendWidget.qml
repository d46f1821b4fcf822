import QtQuick
import Quorvane.Widget

Item {
    id: widget

    required property widgetContent content
    required property widgetTheme theme

    WidgetHeader {
        id: header

        anchors.left: parent.left
        anchors.leftMargin: 16
        anchors.right: parent.right
        anchors.rightMargin: 16
        anchors.top: parent.top
        anchors.topMargin: 11
        content: widget.content
        theme: widget.theme
        markSize: 26
    }

    ShrinkingText {
        id: total

        anchors.left: header.left
        anchors.right: header.right
        anchors.top: header.bottom
        anchors.topMargin: 3
        height: 23
        text: widget.content.totalToday
        size: 22
        weight: Font.Bold
        color: widget.theme.primaryText
        minimumScale: 0.3
        isFigure: true
    }

    ProviderGaugeList {
        anchors.left: header.left
        anchors.right: header.right
        anchors.top: total.bottom
        anchors.topMargin: content.isGrid ? 4 : 10
        content: widget.content.gauges
        theme: widget.theme
    }

    WidgetStatusCaption {
        anchors.left: header.left
        anchors.right: header.right
        anchors.bottom: parent.bottom
        anchors.bottomMargin: 8
        content: widget.content.caption
    }
}
