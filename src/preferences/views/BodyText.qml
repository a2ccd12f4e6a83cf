import QtQuick
import Tidemark.Controls
import Tidemark.Preferences

/// Text of the desktop's size, as it is, in as many lines as it takes.
PlainText {
    wrapMode: Text.Wrap
    color: Theme.text
    font.pixelSize: Theme.bodySize
    Accessible.role: Accessible.StaticText
    Accessible.name: text
}
