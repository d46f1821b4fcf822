import QtQuick
import Quorvane.Widget

// A provider's glyph on a chip in the provider's colour.
Rectangle {
    id: chip

    required property widgetChip content

    implicitWidth: content.container
    implicitHeight: content.container
    radius: content.container * 0.3
    color: content.color
    antialiasing: true

    PictureItem {
        anchors.centerIn: parent
        width: chip.content.glyph
        height: chip.content.glyph
        source: chip.content.picture
        color: chip.content.glyphColor
    }
}
