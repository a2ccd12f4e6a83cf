import QtQuick
import Tidemark.Controls
import Tidemark.Popover

/// A button on a small plate.
Pressable {
    id: chip

    ring.strokeColor: DS.textMuted

    ContinuousRectangle {
        anchors.fill: parent
        radius: 4
        color: DS.border
        opacity: chip.hovered ? 1 : 0.6
    }
}
