import QtQuick
import Tidemark.Controls
import Tidemark.Popover

/// A small chip that opens a page.
Pressable {
    id: button

    required property string title
    required property PopoverModel popover
    required property string url

    label: title
    implicitWidth: text.implicitWidth + 16
    implicitHeight: text.implicitHeight + 6
    Accessible.role: Accessible.Link
    onPressed: popover.open(url)

    ContinuousRectangle {
        anchors.fill: parent
        radius: 4
        color: DS.border
        opacity: button.hovered ? 1 : 0.6
    }

    Label {
        id: text

        anchors.centerIn: parent
        text: button.title
        color: button.hovered ? DS.text : DS.textMuted
    }
}
