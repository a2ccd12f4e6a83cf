pragma ComponentBehavior: Bound

import QtQuick
import Tidemark.Controls
import Tidemark.Popover

/// The lower part of an expanded project row.
Rectangle {
    id: details

    /// Null while the row goes.
    required property ProjectRowModel project
    required property projectRow row
    required property PopoverModel popover

    implicitHeight: column.implicitHeight + 14
    color: DS.hover

    Column {
        id: column

        x: 14
        y: 4
        width: parent.width - 28
        spacing: 8

        DetailRow {
            width: parent.width
            icon: "arrow.triangle.branch"
            label: details.row.branch
            meaning: "Branch"
        }

        DetailRow {
            width: parent.width
            icon: "text.bubble"
            label: details.row.commitMessage
            meaning: "Commit"
        }

        DetailRow {
            width: parent.width
            icon: "timer"
            label: details.row.buildDuration
            meaning: "Build time"
        }

        DetailRow {
            width: parent.width
            icon: "exclamationmark.triangle"
            label: details.row.error
            meaning: "Last check failed"
        }

        DetailRow {
            width: parent.width
            icon: "clock.arrow.circlepath"
            label: details.row.staleness
            meaning: "Age of the status"
        }

        Flow {
            width: parent.width
            spacing: 6

            CopyURLButton {
                project: details.project
            }

            RedeployButton {
                project: details.project
            }

            LinkButton {
                visible: url !== ""
                title: "Vercel"
                popover: details.popover
                url: details.row.inspectorUrl
            }

            LinkButton {
                visible: url !== ""
                title: "Deployment"
                popover: details.popover
                url: details.row.deploymentUrl
            }
        }

        Item {
            width: parent.width
            height: 5
            visible: details.row.history.length > 0

            Divider {
                color: DS.borderSoft
                opacity: 0.4
                y: 2
                width: parent.width
            }
        }

        Column {
            width: parent.width
            visible: details.row.history.length > 0
            spacing: 4

            Repeater {
                model: details.row.history

                DeploymentHistoryRow {
                    required property historyEntry modelData

                    width: column.width
                    entry: modelData
                }
            }
        }
    }
}
