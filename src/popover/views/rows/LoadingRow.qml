import QtQuick
import Tidemark.Controls
import Tidemark.Popover

/// A spinner and what is being fetched, in the middle.
Item {
    id: row

    required property string text
    required property real verticalPadding

    implicitHeight: line.implicitHeight + 2 * verticalPadding
    Accessible.role: Accessible.StaticText
    Accessible.name: text

    Row {
        id: line

        anchors.centerIn: parent
        spacing: 8

        Spinner {
            anchors.verticalCenter: parent.verticalCenter
            width: 14
            height: 14
            color: DS.textMuted
        }

        Label {
            anchors.verticalCenter: parent.verticalCenter
            text: row.text
            color: DS.textFaint
            font.pixelSize: 12
        }
    }
}
