import QtQuick
import Tidemark.Popover

/// What stands in place of a list that has nothing to show.
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
