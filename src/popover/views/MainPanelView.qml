pragma ComponentBehavior: Bound

import QtQuick
import Tidemark.Controls
import Tidemark.Popover

/// The deployments screen.
FocusScope {
    id: panel

    required property PopoverModel popover
    required property int tab
    required property real maximumHeight

    signal selectTab(tab: int)
    signal manage

    implicitHeight: footer.y + footer.height

    function reset(): void {
        list.reset();
        rest.focus = true;
    }

    Keys.onDownPressed: list.focusRow(list.currentIndex)
    Keys.onUpPressed: tabs.takeFocus()

    Item {
        id: header

        x: 14
        y: 11
        width: parent.width - 28
        height: title.implicitHeight + 8 + summary.height + 8 + tabs.implicitHeight

        PanelHeader {
            id: title

            width: parent.width
            popover: panel.popover
        }

        Item {
            id: summary

            anchors.top: title.bottom
            anchors.topMargin: 8
            width: parent.width
            height: Math.max(count.implicitHeight, badge.height)

            Label {
                id: count

                anchors.left: parent.left
                anchors.right: badge.left
                anchors.rightMargin: 8
                anchors.verticalCenter: parent.verticalCenter
                text: panel.popover.summary.countText
                font.pixelSize: 13
                font.weight: Font.Medium
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }

            Item {
                id: badge

                anchors.right: parent.right
                anchors.verticalCenter: parent.verticalCenter
                width: badgeText.implicitWidth + 16
                height: badgeText.implicitHeight + 4
                Accessible.role: Accessible.StaticText
                Accessible.name: badgeText.text

                ContinuousRectangle {
                    anchors.fill: parent
                    radius: height / 2
                    color: panel.popover.summary.badgeColor
                    opacity: 0.15
                }

                Label {
                    id: badgeText

                    anchors.centerIn: parent
                    text: panel.popover.summary.badgeText
                    color: panel.popover.summary.badgeColor
                    font.weight: Font.Medium
                }
            }
        }

        TabBar {
            id: tabs

            anchors.bottom: parent.bottom
            width: parent.width
            selected: panel.tab
            onSelect: tab => panel.selectTab(tab)
        }
    }

    Divider {
        id: divider

        color: DS.borderSoft
        opacity: 0.4
        y: header.y + header.height + 9
        width: parent.width
    }

    ConnectionWarningBanner {
        id: banner

        anchors.top: divider.bottom
        width: parent.width
        height: visible ? implicitHeight : 0
        visible: panel.popover.summary.showsConnectionWarning
        error: panel.popover.summary.connectionError
    }

    FocusRest {
        id: rest
    }

    Item {
        id: content

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
            maximumHeight: Math.max(60, Math.min(360, panel.maximumHeight - content.y - 1 - footer.height))
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

    Divider {
        id: lowerDivider

        color: DS.borderSoft
        opacity: 0.4
        anchors.top: content.bottom
        width: parent.width
    }

    Item {
        id: footer

        anchors.top: lowerDivider.bottom
        width: parent.width
        height: 16 + Math.max(manage.implicitHeight, filter.implicitHeight)

        FooterButton {
            id: manage

            x: 14
            anchors.verticalCenter: parent.verticalCenter
            title: "Manage projects"
            onPressed: panel.manage()
        }

        ProductionFilterToggle {
            id: filter

            x: (manage.x + manage.width + dashboard.x - width) / 2
            anchors.verticalCenter: parent.verticalCenter
            popover: panel.popover
        }

        FooterButton {
            id: dashboard

            anchors.right: parent.right
            anchors.rightMargin: 14
            anchors.verticalCenter: parent.verticalCenter
            title: "Open dashboard"
            onPressed: panel.popover.openDashboard()
        }
    }
}
