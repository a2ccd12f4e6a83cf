import QtQuick
import Tidemark.Popover

/// The lower part of an expanded analytics card.
Rectangle {
    id: details

    required property analyticsCard card

    implicitHeight: column.implicitHeight + 20
    color: DS.hover

    Column {
        id: column

        x: 14
        y: 10
        width: parent.width - 28
        spacing: 10

        MiniBarChart {
            width: parent.width
            card: details.card
        }

        Row {
            StatCell {
                width: column.width / 3
                label: "Requests"
                value: details.card.requests
            }

            StatCell {
                width: column.width / 3
                label: "Bandwidth"
                value: details.card.bandwidth
            }

            StatCell {
                width: column.width / 3
                label: "Threats"
                value: details.card.threats
            }
        }
    }
}
