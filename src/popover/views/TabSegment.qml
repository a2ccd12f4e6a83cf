import QtQuick
import Tidemark.Controls
import Tidemark.Popover

/// One half of the tab bar.
Pressable {
    id: segment

    required property string title
    required property bool isSelected

    label: title
    implicitHeight: text.implicitHeight + 8
    ring.strokeColor: DS.textMuted
    Accessible.role: Accessible.PageTab
    Accessible.selectable: true
    Accessible.selected: isSelected

    ContinuousRectangle {
        anchors.fill: parent
        radius: 5
        color: segment.isSelected ? Qt.rgba(1, 1, 1, 0.1) : "transparent"
    }

    Label {
        id: text

        anchors.centerIn: parent
        width: Math.min(implicitWidth, parent.width)
        text: segment.title
        color: segment.isSelected ? DS.text : segment.hovered ? DS.textMuted : DS.textFaint
        opacity: segment.contentOpacity
        font.weight: segment.isSelected ? Font.DemiBold : Font.Normal
    }
}
