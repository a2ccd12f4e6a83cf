import QtQuick
import Tidemark.Popover

/// One older deployment.
Item {
    id: row

    required property color dotColor
    required property string ref
    required property string word
    required property color wordColor
    required property string age

    implicitHeight: reference.implicitHeight
    Accessible.role: Accessible.StaticText
    Accessible.name: row.ref + ", " + row.word + ", " + row.age

    Dot {
        id: dot

        anchors.verticalCenter: parent.verticalCenter
        size: 5
        color: row.dotColor
    }

    Label {
        id: reference

        anchors.left: dot.right
        anchors.leftMargin: 6
        anchors.right: state.left
        anchors.rightMargin: 6
        text: row.ref
        color: DS.textMuted
        font.pixelSize: 10
    }

    Label {
        id: state

        anchors.right: separator.left
        anchors.rightMargin: 6
        text: row.word
        color: row.wordColor
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
        text: row.age
        color: DS.textFaint
        font.pixelSize: 10
    }
}
