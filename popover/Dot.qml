import QtQuick
import Tidemark.Popover

/// A filled circle.
ContinuousRectangle {
    required property real size

    implicitWidth: size
    implicitHeight: size
    radius: size / 2
}
