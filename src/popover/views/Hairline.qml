import QtQuick
import Tidemark.Popover

/// A divider.
Rectangle {
    implicitHeight: 1
    color: DS.borderSoft
    opacity: 0.4
}
