pragma ComponentBehavior: Bound

import QtQuick
import Tidemark.Controls
import Tidemark.Popover

/// The popover: one of its screens on the dark backdrop.
Rectangle {
    id: root

    enum Screen {
        Deployments,
        Analytics,
        Manage
    }

    required property PopoverModel popover
    property real maximumHeight: 1000
    property int screen: PopoverRootView.Deployments
    property int tab: TabBar.Deployments

    implicitWidth: 268
    implicitHeight: {
        switch (screen) {
        case PopoverRootView.Analytics:
            return analytics.implicitHeight;
        case PopoverRootView.Manage:
            return manage.implicitHeight;
        default:
            return main.implicitHeight;
        }
    }
    width: implicitWidth
    height: implicitHeight
    color: DS.panelBg
    focus: true
    Accessible.role: Accessible.Pane
    Accessible.name: "Tidemark"
    Keys.onEscapePressed: popover.close()
    onScreenChanged: {
        if (screen === PopoverRootView.Manage)
            manage.setSource("ManagePanelView.qml", {
                popover: root.popover,
                maximumHeight: Qt.binding(() => root.maximumHeight)
            });
        else
            manage.source = "";
    }

    function selectTab(tab: int): void {
        root.tab = tab;
        show(tab === TabBar.Analytics ? PopoverRootView.Analytics : PopoverRootView.Deployments);
    }

    function show(screen: int): void {
        root.screen = screen;
        if (analytics.item)
            analytics.item.forceActiveFocus(Qt.OtherFocusReason);
        else if (manage.view)
            manage.view.forceActiveFocus(Qt.OtherFocusReason);
        else
            main.forceActiveFocus(Qt.OtherFocusReason);
    }

    Connections {
        function onActivated(): void {
            root.selectTab(TabBar.Deployments);
            main.reset();
        }

        target: root.popover
    }

    MainPanelView {
        id: main

        width: parent.width
        height: implicitHeight
        visible: root.screen === PopoverRootView.Deployments
        focus: visible
        popover: root.popover
        tab: root.tab
        maximumHeight: root.maximumHeight
        onSelectTab: tab => root.selectTab(tab)
        onManage: {
            root.popover.enterManage();
            root.show(PopoverRootView.Manage);
        }
    }

    Slot {
        id: analytics

        width: parent.width
        active: root.screen === PopoverRootView.Analytics
        delegate: AnalyticsPanelView {
            width: root.width
            height: implicitHeight
            popover: root.popover
            tab: root.tab
            maximumHeight: root.maximumHeight
            onSelectTab: tab => root.selectTab(tab)
        }
    }

    // By its address, so that the text field and all behind it are loaded when somebody manages projects, and not
    // with every first popover.
    Loader {
        id: manage

        readonly property Item view: item as Item

        width: parent.width

        Connections {
            function onBack(): void {
                root.show(PopoverRootView.Deployments);
            }

            target: manage.item
            ignoreUnknownSignals: true
        }
    }

    // The window's edge, for dark panels and windows behind it.
    Rectangle {
        anchors.fill: parent
        color: "transparent"
        border.color: DS.border
    }
}
