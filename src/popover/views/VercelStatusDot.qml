import QtQuick
import Tidemark.Controls

/// The platform's own health.
Dot {
    id: dot

    required property string toolTip

    size: 6
    Accessible.role: Accessible.StaticText
    Accessible.name: toolTip

    HoverTip {
        text: dot.toolTip
        margin: 4
    }
}
