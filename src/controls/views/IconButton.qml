import QtQuick
import Tidemark.Controls

/// A symbol that can be pressed.
Pressable {
    id: button

    required property string symbol
    required property real fontSize
    required property color ink
    property color hoverInk: ink

    implicitWidth: icon.implicitWidth
    implicitHeight: icon.implicitHeight

    Symbol {
        id: icon

        name: button.symbol
        fontSize: button.fontSize
        color: button.hovered ? button.hoverInk : button.ink
        opacity: button.contentOpacity
    }
}
