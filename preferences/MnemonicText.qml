import QtQuick
import Tidemark.Preferences

/// A label of a control. The letter that goes with Alt is underlined while Alt is held.
Text {
    required property string label
    required property string mnemonic

    textFormat: Theme.showsMnemonics ? Text.StyledText : Text.PlainText
    text: Theme.showsMnemonics ? Theme.withMnemonic(label, mnemonic) : label
    verticalAlignment: Text.AlignVCenter
    color: Theme.text
    font.pixelSize: Theme.bodySize
}
