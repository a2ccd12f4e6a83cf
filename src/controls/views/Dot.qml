import QtQuick
import Tidemark.Controls

/// A filled circle.
ContinuousRectangle {
    required property real size

    implicitWidth: size
    implicitHeight: size
    radius: size / 2
}
