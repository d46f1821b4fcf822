import Quorvane.Widget

// One remark, or nothing.
ShrinkingText {
    required property widgetRemark content

    text: content.text
    color: content.color
    size: 10
    minimumScale: 0.85
    visible: text !== ""
    height: visible ? 12 : 0
}
