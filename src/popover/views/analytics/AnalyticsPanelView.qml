pragma ComponentBehavior: Bound

import QtQuick
import Tidemark.Controls
import Tidemark.Popover

/// The analytics screen.
PanelScreen {
    id: panel

    required property PopoverModel popover
    required property int tab

    signal selectTab(tab: int)

    Component.onCompleted: popover.enterAnalytics()
    Component.onDestruction: popover.leaveAnalytics()

    Keys.onDownPressed: list.focusRow(list.currentIndex)
    Keys.onUpPressed: tabs.takeFocus()

    header: [
        PanelHeader {
            width: parent.width
            popover: panel.popover
        },
        Label {
            width: parent.width
            text: "Last 7 days"
            font.pixelSize: 13
            font.weight: Font.Medium
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        },
        TabBar {
            id: tabs

            width: parent.width
            selected: panel.tab
            onSelect: tab => panel.selectTab(tab)
        }
    ]

    FocusRest {}

    Item {
        width: parent.width
        height: {
            if (panel.popover.isLoadingAnalytics)
                return loading.implicitHeight;
            return notice.text !== "" ? notice.implicitHeight : list.implicitHeight;
        }

        LoadingRow {
            id: loading

            width: parent.width
            visible: panel.popover.isLoadingAnalytics
            text: "Loading analytics…"
            verticalPadding: 24
        }

        Notice {
            id: notice

            width: parent.width
            visible: text !== ""
            text: panel.popover.analyticsNotice
        }

        ProjectList {
            id: list

            width: parent.width
            height: implicitHeight
            visible: !panel.popover.isLoadingAnalytics && panel.popover.analyticsNotice === ""
            maximumHeight: Math.max(60, Math.min(360, panel.contentSpace))
            model: panel.popover.analyticsCards
            Accessible.name: "Analytics"
            delegate: AnalyticsCardRow {
                list: list
                width: list.width
                popover: panel.popover
            }
        }
    }

    footerLine: refresh.implicitHeight
    footer: [
        FooterButton {
            id: refresh

            anchors.verticalCenter: parent.verticalCenter
            title: "Refresh"
            onPressed: panel.popover.reloadAnalytics()
        },
        FooterButton {
            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            title: "Cloudflare dashboard"
            onPressed: panel.popover.openAnalyticsDashboard()
        }
    ]
}
