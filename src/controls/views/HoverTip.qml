import QtQuick
import Tidemark.Controls

/// Tells whether the pointer is on the item that it stands in, and shows a text when it rests there.
HoverHandler {
    id: handler

    property string text
    readonly property ToolTip toolTip: ToolTip {
        item: handler.parent
        isHovered: handler.hovered
        text: handler.text
    }
}
