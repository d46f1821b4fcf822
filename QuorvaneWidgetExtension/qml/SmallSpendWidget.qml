import QtQuick
import Quorvane.Widget

Item {
    id: widget

    required property widgetContent content
    required property widgetTheme theme

    WidgetHeader {
        id: header

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.margins: 14
        content: widget.content
        theme: widget.theme
    }

    ShrinkingText {
        id: total

        anchors.left: header.left
        anchors.right: header.right
        anchors.top: header.bottom
        anchors.topMargin: 6
        height: 30
        text: widget.content.totalToday
        size: 27
        weight: Font.Bold
        color: widget.theme.primaryText
        minimumScale: 0.3
        isFigure: true
    }

    Row {
        id: labels

        anchors.left: header.left
        anchors.top: total.bottom
        anchors.topMargin: 3
        height: 15
        spacing: 6

        ProviderBasisBadge {
            anchors.verticalCenter: parent.verticalCenter
            visible: text !== ""
            text: widget.content.badge
            theme: widget.theme
        }

        ShrinkingText {
            anchors.verticalCenter: parent.verticalCenter
            text: widget.content.todayLabel
            size: 11
            color: widget.theme.mutedText
        }
    }

    SparklineItem {
        anchors.left: header.left
        anchors.right: header.right
        anchors.top: labels.bottom
        anchors.topMargin: 2
        anchors.bottom: caption.top
        anchors.bottomMargin: caption.visible ? 3 : 0
        values: widget.content.series.values
        color: widget.content.series.color
    }

    WidgetStatusCaption {
        id: caption

        anchors.left: header.left
        anchors.right: header.right
        anchors.bottom: parent.bottom
        anchors.bottomMargin: 12
        content: widget.content.caption
    }
}
