import QtQuick
import Tidemark.Controls
import Tidemark.Popover

/// One day of a chart, standing on the chart's lower edge.
Item {
    id: bar

    required property dayBar day

    width: Math.max(18, caption.implicitWidth)
    Accessible.role: Accessible.StaticText
    Accessible.name: day.date + ": " + day.views

    HoverTip {
        text: bar.day.date + ": " + bar.day.views
        // Half of the gap to the next one.
        margin: 1.5
    }

    ContinuousRectangle {
        x: (bar.width - width) / 2
        y: caption.y - 2 - bar.day.height
        width: 18
        height: bar.day.height
        radius: 2
        color: DS.live
        opacity: 0.8
    }

    Label {
        id: caption

        anchors.bottom: parent.bottom
        anchors.horizontalCenter: parent.horizontalCenter
        text: bar.day.label
        color: DS.textDim
        font.pixelSize: 8
    }
}
