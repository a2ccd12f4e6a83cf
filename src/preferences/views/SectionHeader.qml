import QtQuick
import Tidemark.Controls
import Tidemark.Preferences

/// The title of a section.
MnemonicText {
    wrapMode: Text.Wrap
    color: Theme.text
    font.pixelSize: Theme.bodySize
    font.bold: true
    Accessible.role: Accessible.Heading
    Accessible.name: label
}
