import QtQuick
import Tidemark.Popover

/// A figure and what it counts.
Column {
    id: cell

    required property string label
    required property string value

    spacing: 2
    Accessible.role: Accessible.StaticText
    Accessible.name: label + ": " + value

    Label {
        width: parent.width
        horizontalAlignment: Text.AlignHCenter
        text: cell.value
        font.pixelSize: 12
        font.weight: Font.Medium
    }

    Label {
        width: parent.width
        horizontalAlignment: Text.AlignHCenter
        text: cell.label
        color: DS.textDim
        font.pixelSize: 10
    }
}
