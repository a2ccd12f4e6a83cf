import QtQuick
import Tidemark.Drawing

/// A filled circle.
ContinuousRectangle {
    required property real size

    implicitWidth: size
    implicitHeight: size
    radius: size / 2
}
