import QtQuick
import Tidemark.Controls

/// Alt with its letter presses a control, and brings it into sight.
Shortcut {
    required property Pressable control
    /// Empty for none.
    required property string mnemonic

    sequence: mnemonic === "" ? "" : "Alt+" + mnemonic
    autoRepeat: false
    onActivated: {
        control.forceActiveFocus(Qt.ShortcutFocusReason);
        control.pressed();
    }
}
