import QtQuick
import Tidemark.Controls

/// A button without a frame: a text, perhaps after a symbol.
Pressable {
    id: button

    required property string title
    required property real fontSize
    required property color ink
    property color hoverInk: ink
    property string symbol
    property real symbolSize: fontSize
    property real gap: 6
    property int weight: Font.Normal
    property bool isUnderlinedByHover: false

    label: title
    implicitWidth: content.implicitWidth
    implicitHeight: content.implicitHeight
    opacity: enabled ? 1 : 0.5

    Row {
        id: content

        readonly property color color: button.hovered && button.enabled ? button.hoverInk : button.ink

        spacing: button.gap
        opacity: button.contentOpacity

        Symbol {
            anchors.verticalCenter: parent.verticalCenter
            visible: button.symbol !== ""
            name: button.symbol
            fontSize: button.symbolSize
            color: content.color
        }

        MnemonicText {
            anchors.verticalCenter: parent.verticalCenter
            label: button.title
            mnemonic: button.mnemonic
            color: content.color
            font.pixelSize: button.fontSize
            font.weight: button.weight
            font.underline: button.isUnderlinedByHover && button.hovered && button.enabled
        }
    }

    Accelerator {
        control: button
        mnemonic: button.mnemonic
        enabled: button.enabled && button.visible
    }
}
