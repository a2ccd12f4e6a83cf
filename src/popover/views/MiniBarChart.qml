pragma ComponentBehavior: Bound

import QtQuick
import Tidemark.Popover

/// The page views of a week, a bar a day.
Item {
    id: chart

    required property QtObject days
    /// The height of the highest bar; 0 without any.
    required property real highest

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

    // What a day's label takes.
    Label {
        id: measure

        visible: false
        text: "00"
        font.pixelSize: 8
    }

    Row {
        id: bars

        y: caption.implicitHeight + 4
        height: chart.highest > 0 ? chart.highest + 2 + measure.implicitHeight : 0
        spacing: 3

        Repeater {
            model: chart.days

            ChartBar {
                height: bars.height
            }
        }
    }
}
