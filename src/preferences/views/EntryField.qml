import QtQuick
import Tidemark.Controls
import Tidemark.Preferences

/// A line of text to edit, in the looks of the desktop.
TextField {
    id: field

    implicitHeight: Math.max(26, contentHeight + topPadding + bottomPadding)
    topPadding: 4
    bottomPadding: 4
    leftPadding: 7
    rightPadding: 7
    color: Theme.text
    selectionColor: Theme.accentFill
    selectedTextColor: Theme.accentFillText
    placeholderTextColor: Theme.placeholder
    font.pixelSize: Theme.bodySize
    font.family: isCode ? Theme.monospaced : Theme.family

    background: Frame {
        radius: 5
        color: Theme.field
        thickness: field.activeFocus ? 2 : 1
        outline: field.activeFocus ? Theme.accentFill : field.hovered ? Theme.placeholder : Theme.fieldOutline
    }
}
