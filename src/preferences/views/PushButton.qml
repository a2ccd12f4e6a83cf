import QtQuick
import QtQuick.Templates as T
import Tidemark.Controls
import Tidemark.Preferences

/// A button with a frame. The default one is in the accent colour.
T.Button {
    id: button

    property bool isDefault: false
    /// The letter that presses it with Alt; empty for none.
    property string mnemonic

    readonly property color face: isDefault && enabled ? Theme.accentFill : Theme.button
    readonly property color ink: isDefault && enabled ? Theme.accentFillText : Theme.text

    implicitWidth: Math.max(72, implicitContentWidth + 28)
    implicitHeight: Math.max(28, implicitContentHeight + 10)
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    opacity: enabled ? 1 : 0.5
    Accessible.name: text

    contentItem: MnemonicText {
        label: button.text
        mnemonic: button.mnemonic
        horizontalAlignment: Text.AlignHCenter
        color: button.ink
    }
    background: Frame {
        radius: 6
        color: button.face
        thickness: button.isDefault && button.enabled ? 0 : 1
        outline: Theme.fieldOutline

        Frame {
            anchors.fill: parent
            radius: 6
            thickness: 0
            color: button.ink
            opacity: button.down ? 0.16 : button.hovered && button.enabled ? 0.07 : 0
        }

        FocusOutline {
            reach: 3
            radius: 9
            visible: button.visualFocus
        }
    }

    Accelerator {
        enabled: button.enabled && button.visible
        control: button
        mnemonic: button.mnemonic
    }
}
