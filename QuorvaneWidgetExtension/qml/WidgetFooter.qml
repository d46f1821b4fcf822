import QtQuick
import Quorvane.Widget

// How fresh the data is, and what is wrong with it.
Item {
    id: footer

    required property widgetContent content

    implicitHeight: Math.max(freshness.implicitHeight, notice.visible ? notice.implicitHeight : 0)

    ShrinkingText {
        id: freshness

        anchors.left: footer.left
        anchors.bottom: footer.bottom
        text: footer.content.freshness.text
        color: footer.content.freshness.color
        size: 10
    }

    ShrinkingText {
        id: notice

        anchors.left: freshness.right
        anchors.leftMargin: 14
        anchors.right: footer.right
        anchors.bottom: footer.bottom
        visible: text !== ""
        isTrailing: true
        text: footer.content.notice.text
        color: footer.content.notice.color
        size: 10
        maximumLines: 2
    }
}
