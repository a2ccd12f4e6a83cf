pragma ComponentBehavior: Bound

import QtQuick
import Tidemark.Controls
import Tidemark.Popover

/// One project of the deployments list: a line that expands into its details.
ExpandableRow {
    id: row

    required property PopoverModel popover

    isExpanded: project.isExpanded
    headHeight: head.height
    details: ProjectDetails {
        width: row.width
        height: implicitHeight
        project: project
        row: project.row
        popover: row.popover
    }

    function takeFocus(): void {
        head.forceActiveFocus(Qt.TabFocusReason);
    }

    function toggle(): void {
        beginToggle();
        project.toggleExpanded();
    }

    ProjectRowModel {
        id: project

        popover: row.popover
        rowId: row.rowId
    }

    Pressable {
        id: head

        width: row.width
        height: 14 + lines.height
        focus: true
        label: project.row.summary
        activeFocusOnTab: row.ListView.isCurrentItem || activeFocus
        ring.reach: -1.25
        ring.strokeColor: DS.textMuted
        Accessible.description: (project.isExpanded ? "Expanded" : "Collapsed")
            + (project.row.pushedAt === "" ? "" : ", pushed " + project.row.pushedAt)
            + (project.row.placeholder === "" ? "" : ", " + project.row.placeholder)
        onPressed: row.toggle()

        Rectangle {
            anchors.fill: parent
            visible: head.hovered
            color: DS.hover
        }

        Dot {
            id: dot

            x: 14
            anchors.verticalCenter: parent.verticalCenter
            size: 7
            color: project.row.dotColor
        }

        Item {
            id: lines

            readonly property real second: name.implicitHeight + 1
            readonly property real third: second + (project.row.domain !== "" || project.row.placeholder !== "" ? placeholder.implicitHeight + 1 : 0)

            anchors.left: dot.right
            anchors.leftMargin: 9
            anchors.right: project.row.error !== "" ? warning.left : word.left
            anchors.rightMargin: 9
            y: 7
            height: project.row.pushedAt !== "" ? third + pushedAt.implicitHeight : third - 1

            Label {
                id: name

                width: parent.width
                text: project.row.name
                font.pixelSize: 13

                HoverTip {
                    text: name.truncated ? project.row.name : ""
                }
            }

            DomainLink {
                id: link

                y: lines.second
                width: Math.min(implicitWidth, parent.width)
                visible: project.row.domain !== ""
                activeFocusOnTab: row.ListView.isCurrentItem || activeFocus
                popover: row.popover
                domain: project.row.domain
                url: project.row.domainUrl
            }

            Label {
                id: placeholder

                y: lines.second
                width: parent.width
                visible: text !== ""
                text: project.row.placeholder
                color: DS.textFaint
            }

            PushedAtLabel {
                id: pushedAt

                y: lines.third
                width: Math.min(implicitWidth, parent.width)
                visible: description !== ""
                description: project.row.pushedAt
                toolTip: project.row.pushedToolTip
            }
        }

        Symbol {
            id: warning

            anchors.right: word.left
            anchors.rightMargin: 9
            anchors.verticalCenter: parent.verticalCenter
            visible: project.row.error !== ""
            name: "exclamationmark.triangle.fill"
            fontSize: 9
            color: DS.building

            HoverTip {
                text: project.row.errorToolTip
                margin: 3
            }
        }

        Label {
            id: word

            anchors.right: chevron.left
            anchors.rightMargin: 9
            anchors.verticalCenter: parent.verticalCenter
            text: project.row.word
            color: project.row.wordColor
        }

        Symbol {
            id: chevron

            anchors.right: parent.right
            anchors.rightMargin: 14
            anchors.verticalCenter: parent.verticalCenter
            name: project.isExpanded ? "chevron.up" : "chevron.down"
            fontSize: 9
            color: DS.textFaint
        }
    }
}
