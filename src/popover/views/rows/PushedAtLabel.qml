import QtQuick
import Tidemark.Controls
import Tidemark.Popover

/// When a deployment was pushed.
Item {
    id: label

    required property string description
    required property string toolTip

    implicitWidth: icon.implicitWidth + 3 + text.implicitWidth
    implicitHeight: text.implicitHeight
    Accessible.role: Accessible.StaticText
    Accessible.name: toolTip

    HoverTip {
        text: label.toolTip
    }

    Symbol {
        id: icon

        anchors.verticalCenter: parent.verticalCenter
        name: "clock"
        fontSize: 9
        color: DS.textFaint
    }

    Label {
        id: text

        anchors.left: icon.right
        anchors.leftMargin: 3
        anchors.right: parent.right
        text: label.description
        color: DS.textFaint
    }
}
