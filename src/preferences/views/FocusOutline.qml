import QtQuick
import Tidemark.Preferences

/// Around the control that the keyboard acts on.
Rectangle {
    anchors.fill: parent
    anchors.margins: -2
    radius: 6
    color: "transparent"
    border.width: 2
    border.color: Theme.accentFill
}
