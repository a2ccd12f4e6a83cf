pragma ComponentBehavior: Bound

import QtQuick
import Tidemark.Popover

/// The page views of a week, a bar a day.
Column {
    id: chart

    required property analyticsCard card

    spacing: 4
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

        height: chart.card.highestBar > 0 ? chart.card.highestBar + 2 + measure.implicitHeight : 0
        spacing: 3

        Repeater {
            model: chart.card.bars

            ChartBar {
                required property dayBar modelData

                height: bars.height
                day: modelData
            }
        }
    }
}
