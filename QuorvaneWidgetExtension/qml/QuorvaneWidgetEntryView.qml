// Components see the ids of their own file; Qt 6.4 has no word to say so.
// qmllint disable unqualified
import QtQuick
import Quorvane.Widget

// The whole widget, one element to a screen reader.
Item {
    id: view

    required property WidgetModel model

    LayoutMirroring.enabled: model.isMirrored
    LayoutMirroring.childrenInherit: true

    Accessible.role: Accessible.StaticText
    Accessible.name: model.accessibilitySummary

    QuorvaneWidgetBackground {
        anchors.fill: parent
        theme: view.model.theme
    }

    Component {
        id: small

        SmallSpendWidget {
            content: view.model.content
            theme: view.model.theme
        }
    }

    Component {
        id: medium

        MediumSpendWidget {
            content: view.model.content
            theme: view.model.theme
        }
    }

    Component {
        id: large

        LargeSpendWidget {
            content: view.model.content
            theme: view.model.theme
        }
    }

    Loader {
        anchors.fill: parent
        sourceComponent: view.model.family === "small" ? small : view.model.family === "medium" ? medium : large
    }
}
