import QtQuick
import Quorvane.Widget

Item {
    id: widget

    required property widgetContent content
    required property widgetTheme theme
    // A grid takes all the room there is; above a stack there is some to spare.
    readonly property bool isDense: content.gauges.isGrid
    // The room of a caption that is not there.
    readonly property real air: isDense && !caption.visible ? 3 : 0

    WidgetHeader {
        id: header

        anchors.left: parent.left
        anchors.leftMargin: 16
        anchors.right: parent.right
        anchors.rightMargin: 16
        anchors.top: parent.top
        anchors.topMargin: widget.isDense ? 11 + widget.air : 15
        content: widget.content
        theme: widget.theme
        markSize: 26
    }

    ShrinkingText {
        id: total

        anchors.left: header.left
        anchors.right: header.right
        anchors.top: header.bottom
        anchors.topMargin: widget.isDense ? 3 + widget.air : 8
        height: widget.isDense ? 23 : 30
        text: widget.content.totalToday
        size: widget.isDense ? 22 : 27
        weight: Font.Bold
        color: widget.theme.primaryText
        minimumScale: 0.3
        isFigure: true
    }

    ProviderGaugeList {
        anchors.left: header.left
        anchors.right: header.right
        anchors.top: total.bottom
        anchors.topMargin: widget.isDense ? 4 + widget.air : 10
        content: widget.content.gauges
        theme: widget.theme
    }

    WidgetStatusCaption {
        id: caption

        anchors.left: header.left
        anchors.right: header.right
        anchors.bottom: parent.bottom
        anchors.bottomMargin: widget.isDense ? 8 : 12
        content: widget.content.caption
    }
}
