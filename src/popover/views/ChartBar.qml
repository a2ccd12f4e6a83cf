import QtQuick
import Tidemark.Controls
import Tidemark.Popover

/// One day of a chart, standing on the chart's lower edge.
Item {
    id: bar

    required property real barHeight
    required property string label
    required property string date
    required property string views

    width: Math.max(18, day.implicitWidth)
    Accessible.role: Accessible.StaticText
    Accessible.name: date + ": " + views

    HoverTip {
        text: bar.date + ": " + bar.views
        // Half of the gap to the next one.
        margin: 1.5
    }

    ContinuousRectangle {
        x: (bar.width - width) / 2
        y: day.y - 2 - bar.barHeight
        width: 18
        height: bar.barHeight
        radius: 2
        color: DS.live
        opacity: 0.8
    }

    Label {
        id: day

        anchors.bottom: parent.bottom
        anchors.horizontalCenter: parent.horizontalCenter
        text: bar.label
        color: DS.textDim
        font.pixelSize: 8
    }
}
