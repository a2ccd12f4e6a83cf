import QtQuick
import Tidemark.Popover

/// One day of a chart, standing on the chart's lower edge.
Item {
    id: bar

    required property real barHeight
    required property string label
    required property string date
    required property string views

    width: 18
    Accessible.role: Accessible.StaticText
    Accessible.name: date + ": " + views

    HoverTip {
        text: bar.views
    }

    ContinuousRectangle {
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
        width: parent.width
        horizontalAlignment: Text.AlignHCenter
        text: bar.label
        color: DS.textDim
        font.pixelSize: 8
    }
}
