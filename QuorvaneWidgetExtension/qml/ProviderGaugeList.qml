// Components see the ids of their own file; Qt 6.4 has no word to say so.
// qmllint disable unqualified
import QtQuick
import Quorvane.Widget

// The providers, in two columns or one below the other.
Item {
    id: list

    required property widgetGauges content
    required property widgetTheme theme

    implicitHeight: content.isGrid ? grid.implicitHeight : stack.implicitHeight

    Grid {
        id: grid

        readonly property real cellWidth: (list.width - columnSpacing) / 2

        anchors.left: list.left
        anchors.right: list.right
        visible: list.content.isGrid
        columns: 2
        columnSpacing: 16
        rowSpacing: 3

        Repeater {
            model: list.content.isGrid ? list.content.providers : []

            ProviderGridCell {
                required property widgetProviderLine modelData

                width: grid.cellWidth
                content: modelData
                theme: list.theme
            }
        }

        Item {
            width: grid.cellWidth
            height: 25
            visible: list.content.more !== ""

            ShrinkingText {
                anchors.fill: parent
                anchors.leftMargin: 22
                text: list.content.more
                size: 11
                color: list.theme.mutedText
            }
        }
    }

    Column {
        id: stack

        anchors.left: list.left
        anchors.right: list.right
        visible: !list.content.isGrid
        spacing: list.content.spacing

        Repeater {
            model: list.content.isGrid ? [] : list.content.providers

            ProviderGaugeRow {
                required property widgetProviderLine modelData

                width: stack.width
                content: modelData
                theme: list.theme
                limitColumn: list.content.limitColumn
            }
        }

        Item {
            width: stack.width
            height: 18
            visible: list.content.more !== ""

            ShrinkingText {
                anchors.fill: parent
                anchors.leftMargin: 23
                text: list.content.more
                size: 11
                color: list.theme.mutedText
            }
        }
    }
}
