import QtQuick
import Quorvane.Widget

// The paper of the widget.
BackgroundItem {
    required property widgetTheme theme

    colors: theme.background
    rim: theme.hairline
    radius: 22
    isMirrored: LayoutMirroring.enabled
}
