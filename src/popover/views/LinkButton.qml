import QtQuick
import Tidemark.Popover

/// A small chip that opens a page.
Chip {
    id: button

    required property string title
    required property PopoverModel popover
    required property string url

    label: title
    implicitWidth: text.implicitWidth + 16
    implicitHeight: text.implicitHeight + 6
    Accessible.role: Accessible.Link
    onPressed: popover.open(url)

    Label {
        id: text

        anchors.centerIn: parent
        text: button.title
        color: button.hovered ? DS.text : DS.textMuted
        opacity: button.contentOpacity
    }
}
