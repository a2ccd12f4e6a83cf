import QtQuick
import Tidemark.Controls
import Tidemark.Popover

/// A symbol that can be pressed.
Pressable {
    id: button

    required property string symbol
    required property real fontSize
    property color color: DS.textFaint

    implicitWidth: icon.implicitWidth
    implicitHeight: icon.implicitHeight
    reach: 4

    Symbol {
        id: icon

        name: button.symbol
        fontSize: button.fontSize
        color: button.color
    }
}
