import QtQuick
import Tidemark.Controls
import Tidemark.Preferences

/// A setting that is on or off.
Pressable {
    id: option

    required property string title
    required property bool isOn

    label: title
    implicitWidth: text.x + text.implicitWidth
    implicitHeight: Math.max(box.height, text.implicitHeight)
    opacity: enabled ? 1 : 0.5
    ring.visible: false
    Accessible.role: Accessible.CheckBox
    Accessible.checkable: true
    Accessible.checked: isOn

    Frame {
        id: box

        anchors.verticalCenter: parent.verticalCenter
        width: 18
        height: 18
        radius: 4
        color: option.isOn ? Theme.accentFill : Theme.field
        thickness: option.isOn ? 0 : 1
        outline: option.hovered ? Theme.secondary : Theme.fieldOutline

        Symbol {
            anchors.centerIn: parent
            visible: option.isOn
            name: "checkmark"
            fontSize: 11
            color: Theme.accentFillText
        }

        FocusOutline {
            visible: option.showsFocus
        }
    }

    MnemonicText {
        id: text

        x: 26
        anchors.verticalCenter: parent.verticalCenter
        label: option.title
        mnemonic: option.mnemonic
        color: Theme.text
        font.pixelSize: Theme.bodySize
    }

    Accelerator {
        control: option
        mnemonic: option.mnemonic
        enabled: option.enabled && option.visible
    }
}
