import QtQuick
import QtQuick.Templates as T
import Tidemark.Controls
import Tidemark.Preferences

/// A button without a frame: a text, perhaps after a symbol.
T.AbstractButton {
    id: button

    property string symbol
    property color ink: Theme.secondary
    property int fontSize: Theme.bodySize
    property real gap: 6
    property string mnemonic
    /// What a screen reader says where the text alone says too little.
    property string spokenName: text

    implicitWidth: implicitContentWidth
    implicitHeight: implicitContentHeight
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    opacity: enabled ? 1 : 0.5
    Accessible.name: spokenName

    contentItem: Row {
        spacing: button.gap
        opacity: button.down ? 0.6 : 1

        Symbol {
            anchors.verticalCenter: parent.verticalCenter
            visible: button.symbol !== ""
            name: button.symbol
            fontSize: button.fontSize
            color: button.ink
        }

        MnemonicText {
            anchors.verticalCenter: parent.verticalCenter
            label: button.text
            mnemonic: button.mnemonic
            color: button.ink
            font.pixelSize: button.fontSize
            font.underline: button.hovered && button.enabled
        }
    }
    background: Item {
        FocusOutline {
            reach: 3
            radius: 4
            visible: button.visualFocus
        }
    }

    Accelerator {
        enabled: button.enabled && button.visible
        control: button
        mnemonic: button.mnemonic
    }
}
