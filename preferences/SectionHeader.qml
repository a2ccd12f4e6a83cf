import QtQuick
import Tidemark.Preferences

/// The title of a section.
BodyText {
    id: header

    required property string title
    /// The letter that goes there with Alt; empty for none.
    property string mnemonic

    readonly property bool isUnderlined: mnemonic !== "" && Theme.showsMnemonics

    textFormat: isUnderlined ? Text.StyledText : Text.PlainText
    text: isUnderlined ? Theme.withMnemonic(title, mnemonic) : title
    font.bold: true
    Accessible.role: Accessible.Heading
    Accessible.name: title
}
