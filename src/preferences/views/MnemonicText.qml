import QtQuick
import Tidemark.Preferences

/// A label. The letter that goes with Alt is underlined while Alt is held.
Text {
    required property string label
    /// Empty for none.
    property string mnemonic

    readonly property bool isUnderlined: mnemonic !== "" && Theme.showsMnemonics

    textFormat: isUnderlined ? Text.StyledText : Text.PlainText
    text: isUnderlined ? Theme.withMnemonic(label, mnemonic) : label
    horizontalAlignment: Text.AlignLeft
    verticalAlignment: Text.AlignVCenter
    color: Theme.text
    font.pixelSize: Theme.bodySize
}
