pragma ComponentBehavior: Bound

import QtQuick
import Tidemark.Popover

/// The page views of a week, a bar a day.
Item {
    id: chart

    required property QtObject days

    implicitHeight: caption.implicitHeight + 4 + bars.height
    Accessible.role: Accessible.Chart
    Accessible.name: caption.text

    Label {
        id: caption

        width: parent.width
        text: "Page views — last 7 days"
        color: DS.textDim
        font.pixelSize: 10
    }

    // As high as a label, the gap above it and the highest bar.
    Label {
        id: measure

        visible: false
        text: "00"
        font.pixelSize: 8
    }

    Row {
        id: bars

        y: caption.implicitHeight + 4
        height: 36 + 2 + measure.implicitHeight
        spacing: 3

        Repeater {
            model: chart.days

            ChartBar {
                height: bars.height
            }
        }
    }
}
