import QtQuick
import Tidemark.Controls
import Tidemark.Popover

/// Switches between the two tabbed screens.
Item {
    id: bar

    enum Tab {
        Deployments,
        Analytics
    }

    required property int selected

    signal select(tab: int)

    implicitHeight: deployments.implicitHeight

    /// Gives the keyboard to the selected tab.
    function takeFocus(): void {
        if (selected === TabBar.Deployments)
            deployments.forceActiveFocus(Qt.BacktabFocusReason);
        else
            analytics.forceActiveFocus(Qt.BacktabFocusReason);
    }

    Accessible.role: Accessible.PageTabList
    Accessible.name: "Screens"

    ContinuousRectangle {
        anchors.fill: parent
        radius: 6
        color: Qt.rgba(1, 1, 1, 0.06)
    }

    TabSegment {
        id: deployments

        width: parent.width / 2
        title: "Deployments"
        isSelected: bar.selected === TabBar.Deployments
        onPressed: bar.select(TabBar.Deployments)
    }

    TabSegment {
        id: analytics

        anchors.left: deployments.right
        width: parent.width / 2
        title: "Analytics"
        isSelected: bar.selected === TabBar.Analytics
        onPressed: bar.select(TabBar.Analytics)
    }

    ContinuousRectangle {
        anchors.fill: parent
        radius: 6
        strokeColor: DS.borderSoft
        strokeWidth: 0.5
    }
}
