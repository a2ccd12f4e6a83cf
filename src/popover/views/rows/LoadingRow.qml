import QtQuick
import Tidemark.Controls
import Tidemark.Popover

/// A spinner and what is being fetched, in the middle.
Item {
    id: row

    required property string text
    required property real verticalPadding

    implicitHeight: Math.max(14, label.implicitHeight) + 2 * verticalPadding
    Accessible.role: Accessible.StaticText
    Accessible.name: text

    Item {
        anchors.centerIn: parent
        width: 14 + 8 + label.implicitWidth
        height: Math.max(14, label.implicitHeight)

        Spinner {
            anchors.verticalCenter: parent.verticalCenter
            width: 14
            height: 14
            color: DS.textMuted
        }

        Label {
            id: label

            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            text: row.text
            color: DS.textFaint
            font.pixelSize: 12
        }
    }
}
