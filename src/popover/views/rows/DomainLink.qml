import QtQuick
import Tidemark.Controls
import Tidemark.Popover

/// A project's domain, which opens its site.
Pressable {
    id: link

    required property PopoverModel popover
    required property string domain
    required property string url

    label: domain
    toolTip: text.truncated ? domain : ""
    implicitWidth: icon.implicitWidth + 3 + text.implicitWidth
    implicitHeight: text.implicitHeight
    ring.strokeColor: DS.textMuted
    Accessible.role: Accessible.Link
    onPressed: popover.open(url)

    Symbol {
        id: icon

        anchors.verticalCenter: parent.verticalCenter
        name: "link"
        fontSize: 9
        color: text.color
    }

    Label {
        id: text

        anchors.left: icon.right
        anchors.leftMargin: 3
        anchors.right: parent.right
        text: link.domain
        color: link.hovered ? DS.text : DS.textFaint
    }

    Rectangle {
        anchors.left: text.left
        anchors.baseline: text.baseline
        anchors.baselineOffset: 2
        width: text.contentWidth
        height: 1
        visible: link.hovered
        color: DS.textMuted
    }
}
