import QtQuick
import Tidemark.Preferences

/// The title of a section.
MnemonicText {
    wrapMode: Text.Wrap
    font.bold: true
    Accessible.role: Accessible.Heading
    Accessible.name: label
}
