import QtQuick
import Tidemark.Controls

/// A label. The letter that goes with Alt is underlined while Alt is held.
PlainText {
    required property string label
    /// Empty for none.
    property string mnemonic

    readonly property ViewWindow view: mnemonic === "" ? null : Window.window as ViewWindow
    readonly property bool isUnderlined: view !== null && view.isAltHeld

    textFormat: isUnderlined ? Text.StyledText : Text.PlainText
    text: isUnderlined ? view.withMnemonic(label, mnemonic) : label
    verticalAlignment: Text.AlignVCenter
}
