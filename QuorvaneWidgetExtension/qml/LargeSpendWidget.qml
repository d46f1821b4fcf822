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
        anchors.margins: 16
        content: widget.content
        theme: widget.theme
    }

    Item {
        id: figures

        anchors.left: header.left
        anchors.right: header.right
        anchors.top: header.bottom
        anchors.topMargin: 10
        height: 80

        Column {
            id: amounts

            anchors.left: parent.left
            anchors.verticalCenter: parent.verticalCenter
            width: 168

            ShrinkingText {
                width: parent.width
                height: 30
                text: widget.content.totalToday
                size: 27
                weight: Font.Bold
                color: widget.theme.primaryText
                minimumScale: 0.3
                isFigure: true
            }

            ShrinkingText {
                width: parent.width
                text: widget.content.todayLabel
                size: 11
                color: widget.theme.mutedText
            }

            Item {
                width: 1
                height: 4
            }

            ShrinkingText {
                width: parent.width
                height: 18
                text: widget.content.totalWindow
                size: 14
                weight: Font.DemiBold
                color: widget.theme.primaryText
                minimumScale: 0.3
                isFigure: true
            }

            ShrinkingText {
                width: parent.width
                text: widget.content.windowLabel
                size: 11
                color: widget.theme.mutedText
            }
        }

        SparklineItem {
            anchors.left: amounts.right
            anchors.leftMargin: 12
            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            height: 66
            values: widget.content.series.values
            color: widget.content.series.color
        }
    }

    Rectangle {
        id: rule

        anchors.left: header.left
        anchors.right: header.right
        anchors.top: figures.bottom
        anchors.topMargin: 9
        height: 1
        color: widget.theme.hairline
    }

    ProviderGaugeList {
        anchors.left: header.left
        anchors.right: header.right
        anchors.top: rule.bottom
        anchors.topMargin: 10
        content: widget.content.gauges
        theme: widget.theme
    }

    WidgetFooter {
        anchors.left: header.left
        anchors.right: header.right
        anchors.bottom: parent.bottom
        anchors.bottomMargin: 14
        content: widget.content
    }
}
