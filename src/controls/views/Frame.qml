import QtQuick
import Tidemark.Controls

/// The face of a control with its outline, which lies within it and is as thick on all sides at any scale.
Item {
    id: frame

    property alias color: shape.color
    property alias outline: shape.strokeColor
    property alias thickness: shape.strokeWidth
    property alias radius: shape.radius

    ContinuousRectangle {
        id: shape

        anchors.fill: parent
        anchors.margins: strokeWidth / 2
        strokeWidth: 1
    }
}
