import QtQuick
import Tidemark.Popover

/// What an expanded analytics card shows below its line.
Rectangle {
    id: details

    /// Null while the row goes.
    required property AnalyticsCardModel card

    implicitHeight: chart.implicitHeight + 10 + requests.implicitHeight + 20
    color: DS.hover

    MiniBarChart {
        id: chart

        x: 14
        y: 10
        width: parent.width - 28
        height: implicitHeight
        days: details.card ? details.card.bars : null
        highest: details.card ? details.card.highestBar : 0
    }

    StatCell {
        id: requests

        x: 14
        y: chart.y + chart.implicitHeight + 10
        width: (parent.width - 28) / 3
        height: implicitHeight
        label: "Requests"
        value: details.card ? details.card.requests : ""
    }

    StatCell {
        id: bandwidth

        anchors.left: requests.right
        y: requests.y
        width: requests.width
        height: implicitHeight
        label: "Bandwidth"
        value: details.card ? details.card.bandwidth : ""
    }

    StatCell {
        anchors.left: bandwidth.right
        y: requests.y
        width: requests.width
        height: implicitHeight
        label: "Threats"
        value: details.card ? details.card.threats : ""
    }
}
