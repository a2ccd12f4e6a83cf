import QtQuick
import Tidemark.Controls
import Tidemark.Popover

/// One line of text, as it is. It elides where it is given less width than it wants.
PlainText {
    elide: Text.ElideRight
    maximumLineCount: 1
    color: DS.text
    font.pixelSize: 11
}
