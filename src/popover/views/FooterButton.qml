import QtQuick
import Tidemark.Popover

/// A text that can be pressed.
Pressable {
    id: button

    required property string title

    label: title
    implicitWidth: text.implicitWidth
    implicitHeight: text.implicitHeight
    reach: 4

    Label {
        id: text

        text: button.title
        color: button.hovered ? "#888888" : DS.textFaint
    }
}
