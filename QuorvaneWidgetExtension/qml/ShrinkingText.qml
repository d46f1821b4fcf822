import QtQuick
import Quorvane.Widget

// A text that shrinks to its width, down to a least scale.
Item {
    id: line

    required property string text
    required property real size
    required property color color
    property int weight: Font.Normal
    property real minimumScale: 1
    property bool isFigure: false
    property bool isTrailing: false
    property int maximumLines: 1

    // The width at the least scale.
    readonly property real leastWidth: label.leastWidth

    implicitWidth: label.naturalWidth
    implicitHeight: label.naturalHeight

    TextItem {
        id: label

        anchors.fill: line
        anchors.margins: -bleed
        bleed: 3
        text: line.text
        size: line.size
        weight: line.weight
        color: line.color
        minimumScale: line.minimumScale
        isFigure: line.isFigure
        isAtTheRight: line.isTrailing !== line.LayoutMirroring.enabled
        maximumLines: line.maximumLines
    }
}
