import QtQuick
import Tidemark.Popover

/// The caption of a section, over the whole width.
Label {
    id: caption

    required property string caption

    leftPadding: 14
    rightPadding: 14
    topPadding: 8
    bottomPadding: 3
    text: caption.caption.toUpperCase()
    color: DS.textDim
    font.pixelSize: 10
    font.weight: Font.DemiBold
    font.letterSpacing: 1
    Accessible.role: Accessible.Heading
    Accessible.name: caption.caption
}
