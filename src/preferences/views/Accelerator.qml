import QtQuick
import QtQuick.Templates as T

/// Alt with a letter does what a click on the control does, and brings it into sight.
Shortcut {
    required property T.AbstractButton control
    /// Empty for none.
    required property string mnemonic

    sequence: mnemonic === "" ? "" : "Alt+" + mnemonic
    autoRepeat: false
    onActivated: {
        control.forceActiveFocus(Qt.ShortcutFocusReason);
        if (!control.checkable) {
            control.clicked();
            return;
        }
        control.toggle();
        control.toggled();
    }
}
