pragma ComponentBehavior: Bound

import QtQuick
import Tidemark.Controls
import Tidemark.Popover

/// The deployments screen.
PanelScreen {
    id: panel

    required property PopoverModel popover
    required property int tab

    signal selectTab(tab: int)
    signal manage

    function reset(): void {
        list.reset();
        rest.focus = true;
    }

    Keys.onDownPressed: list.focusRow(list.currentIndex)
    Keys.onUpPressed: tabs.takeFocus()

    header: [
        PanelHeader {
            width: parent.width
            popover: panel.popover
        },
        Item {
            width: parent.width
            height: childrenRect.height

            Label {
                anchors.left: parent.left
                anchors.right: badge.left
                anchors.rightMargin: 8
                anchors.verticalCenter: badge.verticalCenter
                text: panel.popover.summary.countText
                font.pixelSize: 13
                font.weight: Font.Medium
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }

            Label {
                id: badge

                anchors.right: parent.right
                leftPadding: 8
                rightPadding: 8
                topPadding: 2
                bottomPadding: 2
                text: panel.popover.summary.badgeText
                color: panel.popover.summary.badgeColor
                font.weight: Font.Medium
                Accessible.role: Accessible.StaticText
                Accessible.name: text

                ContinuousRectangle {
                    anchors.fill: parent
                    z: -1
                    radius: height / 2
                    color: panel.popover.summary.badgeColor
                    opacity: 0.15
                }
            }
        },
        TabBar {
            id: tabs

            width: parent.width
            selected: panel.tab
            onSelect: tab => panel.selectTab(tab)
        }
    ]

    FocusRest {
        id: rest
    }

    ConnectionWarningBanner {
        id: banner

        width: parent.width
        height: visible ? implicitHeight : 0
        visible: panel.popover.summary.showsConnectionWarning
        error: panel.popover.summary.connectionError
    }

    Item {
        anchors.top: banner.bottom
        width: parent.width
        height: {
            if (panel.popover.summary.isLoading)
                return loading.implicitHeight;
            return panel.popover.summary.isNothingTracked ? nothing.implicitHeight : list.implicitHeight;
        }

        LoadingRow {
            id: loading

            width: parent.width
            visible: panel.popover.summary.isLoading
            text: "Fetching projects…"
            verticalPadding: 20
        }

        Notice {
            id: nothing

            width: parent.width
            visible: !panel.popover.summary.isLoading && panel.popover.summary.isNothingTracked
            text: "No projects tracked.\nOpen Manage projects to add some."
        }

        ProjectList {
            id: list

            objectName: "deployments"

            width: parent.width
            height: implicitHeight
            visible: !panel.popover.summary.isLoading && !panel.popover.summary.isNothingTracked
            maximumHeight: Math.max(60, Math.min(360, panel.contentSpace - banner.height))
            topMargin: 5
            bottomMargin: 5
            model: panel.popover.trackedProjects
            Accessible.name: "Deployments"
            delegate: MainProjectRow {
                list: list
                width: list.width
                popover: panel.popover
            }
        }
    }

    footerLine: Math.max(manage.implicitHeight, filter.implicitHeight)
    footer: [
        FooterButton {
            id: manage

            anchors.verticalCenter: parent.verticalCenter
            title: "Manage projects"
            onPressed: panel.manage()
        },
        ProductionFilterToggle {
            id: filter

            x: (manage.width + dashboard.x - width) / 2
            anchors.verticalCenter: parent.verticalCenter
            popover: panel.popover
        },
        FooterButton {
            id: dashboard

            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            title: "Open dashboard"
            onPressed: panel.popover.openDashboard()
        }
    ]
}
