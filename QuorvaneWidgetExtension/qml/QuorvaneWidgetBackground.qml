import QtQuick
import Quorvane.Widget

// The paper of the widget.
BackgroundItem {
    required property widgetTheme theme

    colors: theme.background
    rim: Qt.alpha(theme.primaryText, 0.08)
    radius: 22
    isMirrored: LayoutMirroring.enabled
}
