pragma ComponentBehavior: Bound

import QtQuick
import Tidemark.Controls
import Tidemark.Popover

/// One site of the analytics list: a line that expands into its week.
ExpandableRow {
    id: row

    required property PopoverModel popover

    isExpanded: card.isExpanded
    headHeight: head.height
    details: AnalyticsDetails {
        width: row.width
        height: implicitHeight
        card: card.row
    }

    function takeFocus(): void {
        head.forceActiveFocus(Qt.TabFocusReason);
    }

    function toggle(): void {
        beginToggle();
        card.toggleExpanded();
    }

    AnalyticsCardModel {
        id: card

        popover: row.popover
        rowId: row.rowId
    }

    Pressable {
        id: head

        width: row.width
        height: 16 + Math.max(names.implicitHeight, totals.implicitHeight)
        focus: true
        label: card.row.projectName + ", " + card.row.zoneName + ", " + card.row.views + ", " + card.row.visitors
        activeFocusOnTab: row.ListView.isCurrentItem || activeFocus
        ring.reach: -1.25
        ring.strokeColor: DS.textMuted
        Accessible.description: card.isExpanded ? "Expanded" : "Collapsed"
        onPressed: row.toggle()

        Rectangle {
            anchors.fill: parent
            visible: head.hovered
            color: DS.hover
        }

        Column {
            id: names

            anchors.left: parent.left
            anchors.leftMargin: 14
            anchors.right: totals.left
            anchors.rightMargin: 9
            anchors.verticalCenter: parent.verticalCenter
            spacing: 1

            Label {
                id: project

                width: parent.width
                text: card.row.projectName
                font.pixelSize: 13

                HoverTip {
                    text: project.truncated ? card.row.projectName : ""
                }
            }

            Label {
                id: zone

                width: parent.width
                text: card.row.zoneName
                color: DS.textFaint

                HoverTip {
                    text: zone.truncated ? card.row.zoneName : ""
                }
            }
        }

        Column {
            id: totals

            anchors.right: chevron.left
            anchors.rightMargin: 9
            anchors.verticalCenter: parent.verticalCenter
            // A hostile figure leaves the names some room.
            width: Math.min(Math.max(views.implicitWidth, visitors.implicitWidth), head.width / 2)
            spacing: 1

            Label {
                id: views

                width: parent.width
                horizontalAlignment: Text.AlignRight
                text: card.row.views
                color: DS.live
                font.pixelSize: 12
                font.weight: Font.Medium
            }

            Label {
                id: visitors

                width: parent.width
                horizontalAlignment: Text.AlignRight
                text: card.row.visitors
                color: DS.textMuted
            }
        }

        Symbol {
            id: chevron

            anchors.right: parent.right
            anchors.rightMargin: 14
            anchors.verticalCenter: parent.verticalCenter
            name: card.isExpanded ? "chevron.up" : "chevron.down"
            fontSize: 9
            color: DS.textFaint
        }
    }
}
