import QtQuick
import Tidemark.Popover

/// The text in place of an empty list.
Text {
    textFormat: Text.PlainText
    horizontalAlignment: Text.AlignHCenter
    wrapMode: Text.Wrap
    padding: 20
    color: DS.textFaint
    font.pixelSize: 12
    Accessible.role: Accessible.StaticText
    Accessible.name: text
}
