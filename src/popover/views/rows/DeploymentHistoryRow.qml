import QtQuick
import Tidemark.Controls
import Tidemark.Popover

/// One older deployment.
Item {
    id: row

    required property historyEntry entry

    implicitHeight: reference.implicitHeight
    Accessible.role: Accessible.StaticText
    Accessible.name: row.entry.ref + ", " + row.entry.word + ", " + row.entry.age

    Dot {
        id: dot

        anchors.verticalCenter: parent.verticalCenter
        size: 5
        color: row.entry.dotColor
    }

    Label {
        id: reference

        anchors.left: dot.right
        anchors.leftMargin: 6
        anchors.right: state.left
        anchors.rightMargin: 6
        text: row.entry.ref
        color: DS.textMuted
        font.pixelSize: 10
    }

    Label {
        id: state

        anchors.right: separator.left
        anchors.rightMargin: 6
        text: row.entry.word
        color: row.entry.wordColor
        font.pixelSize: 10
    }

    Label {
        id: separator

        anchors.right: age.left
        anchors.rightMargin: 6
        text: "·"
        color: DS.textFaint
        font.pixelSize: 10
    }

    Label {
        id: age

        anchors.right: parent.right
        text: row.entry.age
        color: DS.textFaint
        font.pixelSize: 10
    }
}
