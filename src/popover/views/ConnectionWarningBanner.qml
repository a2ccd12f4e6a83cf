import QtQuick
import Tidemark.Controls
import Tidemark.Popover

/// No project could be checked.
Rectangle {
    id: banner

    required property string error

    implicitHeight: Math.max(icon.implicitHeight, text.implicitHeight) + 12
    color: Qt.rgba(DS.building.r, DS.building.g, DS.building.b, 0.12)
    Accessible.role: Accessible.AlertMessage
    Accessible.name: text.text
    Accessible.description: error

    HoverTip {
        text: banner.error
    }

    Symbol {
        id: icon

        x: 14
        anchors.verticalCenter: parent.verticalCenter
        name: "wifi.exclamationmark"
        fontSize: 10
        color: DS.building
    }

    Label {
        id: text

        anchors.left: icon.right
        anchors.leftMargin: 6
        anchors.right: parent.right
        anchors.rightMargin: 14
        anchors.verticalCenter: parent.verticalCenter
        text: "Can't reach Vercel — showing last known status"
        color: DS.building
    }
}
