import QtQuick
import Tidemark.Controls
import Tidemark.Popover

/// A screen of the popover: a header, the content, and below a divider a footer.
///
/// The parts that can change their height hang on each other by anchors. A positioner would place them only when the next frame is drawn,
/// and the window would get its height a frame late.
FocusScope {
    id: screen

    /// One below the other.
    property alias header: header.data
    property alias hasHeaderDivider: divider.visible
    /// Its items place themselves; it is as high as they are.
    default property alias content: content.data
    /// Side by side, centred on a line of the height footerLine.
    property alias footer: footer.data
    required property real footerLine

    required property real maximumHeight
    /// The space that a list at the top of the content can take.
    readonly property real contentSpace: maximumHeight - content.y - footerDivider.height - footer.height

    implicitHeight: footer.y + footer.height

    Column {
        id: header

        x: 14
        y: 11
        width: parent.width - 28
        spacing: 8
    }

    Divider {
        id: divider

        color: DS.borderSoft
        opacity: 0.4
        anchors.top: header.bottom
        anchors.topMargin: 9
        width: parent.width
    }

    Item {
        id: content

        anchors.top: screen.hasHeaderDivider ? divider.bottom : divider.top
        width: parent.width
        height: childrenRect.y + childrenRect.height
    }

    Divider {
        id: footerDivider

        color: DS.borderSoft
        opacity: 0.4
        anchors.top: content.bottom
        width: parent.width
    }

    Item {
        id: footer

        anchors.top: footerDivider.bottom
        anchors.left: parent.left
        anchors.leftMargin: 14
        anchors.right: parent.right
        anchors.rightMargin: 14
        height: screen.footerLine + 16
    }
}
