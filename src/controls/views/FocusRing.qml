import QtQuick
import Tidemark.Controls

/// Around the control that the keyboard acts on; the control says when that is.
ContinuousRectangle {
    anchors.fill: parent
    anchors.margins: -2
    z: 1
    radius: 5
    strokeWidth: 1.5
}
