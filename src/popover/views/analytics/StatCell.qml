import QtQuick
import Tidemark.Popover

/// A figure and what it counts.
Item {
    id: cell

    required property string label
    required property string value

    implicitHeight: figure.implicitHeight + 2 + caption.implicitHeight
    Accessible.role: Accessible.StaticText
    Accessible.name: label + ": " + value

    Label {
        id: figure

        width: parent.width
        horizontalAlignment: Text.AlignHCenter
        text: cell.value
        font.pixelSize: 12
        font.weight: Font.Medium
    }

    Label {
        id: caption

        y: figure.implicitHeight + 2
        width: parent.width
        horizontalAlignment: Text.AlignHCenter
        text: cell.label
        color: DS.textDim
        font.pixelSize: 10
    }
}
