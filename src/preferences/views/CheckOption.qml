import QtQuick
import QtQuick.Templates as T
import Tidemark.Controls
import Tidemark.Preferences

/// A setting that is on or off.
T.CheckBox {
    id: option

    property string mnemonic

    implicitWidth: leftPadding + implicitContentWidth
    implicitHeight: Math.max(18, implicitContentHeight)
    leftPadding: 26
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    opacity: enabled ? 1 : 0.5
    Accessible.name: text

    indicator: Frame {
        y: Math.round((option.height - height) / 2)
        width: 18
        height: 18
        radius: 4
        color: option.checked ? Theme.accentFill : Theme.field
        thickness: option.checked ? 0 : 1
        outline: option.hovered ? Theme.secondary : Theme.fieldOutline

        Symbol {
            anchors.centerIn: parent
            visible: option.checked
            name: "checkmark"
            fontSize: 11
            color: Theme.accentFillText
        }

        FocusOutline {
            visible: option.visualFocus
        }
    }
    contentItem: MnemonicText {
        label: option.text
        mnemonic: option.mnemonic
    }

    Accelerator {
        enabled: option.enabled && option.visible
        control: option
        mnemonic: option.mnemonic
    }
}
