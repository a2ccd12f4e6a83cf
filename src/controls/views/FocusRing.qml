import QtQuick
import Tidemark.Controls

/// Around the control that the keyboard acts on; the control says when that is.
ContinuousRectangle {
    /// How far its outer edge is from the control.
    property real reach: 2.75

    anchors.fill: parent
    anchors.margins: strokeWidth / 2 - reach
    z: 1
    radius: 5
    strokeWidth: 1.5
}
