import QtQuick
import Tidemark.Controls
import Tidemark.Preferences

/// A button with a frame. The default one is in the accent colour.
Pressable {
    id: button

    required property string title
    property bool isDefault: false

    readonly property bool isAccented: isDefault && enabled
    readonly property color ink: isAccented ? Theme.accentFillText : Theme.text

    label: title
    implicitWidth: Math.max(72, text.implicitWidth + 28)
    implicitHeight: Math.max(28, text.implicitHeight + 10)
    opacity: enabled ? 1 : 0.5
    ring.reach: 3
    ring.radius: 9
    ring.strokeWidth: 2
    ring.strokeColor: Theme.accentFill

    Frame {
        anchors.fill: parent
        radius: 6
        color: button.isAccented ? Theme.accentFill : Theme.button
        thickness: button.isAccented ? 0 : 1
        outline: Theme.fieldOutline

        Frame {
            anchors.fill: parent
            radius: 6
            thickness: 0
            color: button.ink
            opacity: button.down ? 0.16 : button.hovered && button.enabled ? 0.07 : 0
        }
    }

    MnemonicText {
        id: text

        anchors.centerIn: parent
        label: button.title
        mnemonic: button.mnemonic
        color: button.ink
        font.pixelSize: Theme.bodySize
    }

    Accelerator {
        control: button
        mnemonic: button.mnemonic
        enabled: button.enabled && button.visible
    }
}
