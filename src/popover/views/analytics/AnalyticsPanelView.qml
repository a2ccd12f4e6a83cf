pragma ComponentBehavior: Bound

import QtQuick
import Tidemark.Controls
import Tidemark.Popover

/// The analytics screen.
FocusScope {
    id: panel

    required property PopoverModel popover
    required property int tab
    required property real maximumHeight

    signal selectTab(tab: int)

    implicitHeight: footer.y + footer.height
    Component.onCompleted: popover.enterAnalytics()
    Component.onDestruction: popover.leaveAnalytics()

    Keys.onDownPressed: list.focusRow(list.currentIndex)
    Keys.onUpPressed: tabs.takeFocus()

    Item {
        id: header

        x: 14
        y: 11
        width: parent.width - 28
        height: title.implicitHeight + 8 + period.implicitHeight + 8 + tabs.implicitHeight

        PanelHeader {
            id: title

            width: parent.width
            popover: panel.popover
        }

        Label {
            id: period

            y: title.implicitHeight + 8
            width: parent.width
            text: "Last 7 days"
            font.pixelSize: 13
            font.weight: Font.Medium
            Accessible.role: Accessible.StaticText
            Accessible.name: text
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

    FocusRest {}

    Item {
        id: content

        anchors.top: divider.bottom
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
            maximumHeight: Math.max(60, Math.min(360, panel.maximumHeight - content.y - 1 - footer.height))
            model: panel.popover.analyticsCards
            Accessible.name: "Analytics"
            delegate: AnalyticsCardRow {
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
        height: 16 + refresh.implicitHeight

        FooterButton {
            id: refresh

            x: 14
            anchors.verticalCenter: parent.verticalCenter
            title: "Refresh"
            onPressed: panel.popover.reloadAnalytics()
        }

        FooterButton {
            anchors.right: parent.right
            anchors.rightMargin: 14
            anchors.verticalCenter: parent.verticalCenter
            title: "Cloudflare dashboard"
            onPressed: panel.popover.openAnalyticsDashboard()
        }
    }
}
