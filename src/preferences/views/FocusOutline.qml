import QtQuick
import Tidemark.Controls
import Tidemark.Preferences

/// The focus ring in the desktop's accent colour.
FocusRing {
    /// How far its outer edge is from the control.
    property real reach: 2

    anchors.margins: strokeWidth / 2 - reach
    strokeWidth: 2
    strokeColor: Theme.accentFill
}
