import QtQuick
import Tidemark.Controls
import Tidemark.Popover

/// The title, the version, the platform's health and the buttons for preferences and quitting.
Item {
    id: header

    required property PopoverModel popover

    /// Between two items of the row.
    readonly property real gap: 6

    implicitHeight: Math.max(title.implicitHeight, preferences.implicitHeight)

    Label {
        id: title

        anchors.verticalCenter: parent.verticalCenter
        text: "TIDEMARK"
        color: DS.textMuted
        font.weight: Font.DemiBold
        font.letterSpacing: 1
        Accessible.role: Accessible.Heading
        Accessible.name: "Tidemark"
    }

    Label {
        id: version

        anchors.left: title.right
        anchors.leftMargin: header.gap + 2
        anchors.baseline: title.baseline
        width: Math.min(implicitWidth,
                        preferences.x - x - status.width - 2 * header.gap - 4)
        text: header.popover.versionText
        color: DS.textFaint
        font.pixelSize: 9
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }

    VercelStatusDot {
        id: status

        anchors.left: version.right
        anchors.leftMargin: header.gap + 4
        anchors.verticalCenter: parent.verticalCenter
        color: header.popover.platformDotColor
        toolTip: header.popover.platformToolTip
    }

    IconButton {
        id: preferences

        anchors.right: quit.left
        anchors.rightMargin: header.gap
        anchors.verticalCenter: parent.verticalCenter
        symbol: "gearshape"
        fontSize: 11
        ink: DS.textFaint
        hoverInk: DS.textMuted
        ring.strokeColor: DS.textMuted
        label: "Preferences"
        toolTip: "Preferences"
        reach: 3
        onPressed: header.popover.openPreferences()
    }

    IconButton {
        id: quit

        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        symbol: "power"
        fontSize: 11
        ink: DS.textFaint
        hoverInk: DS.textMuted
        ring.strokeColor: DS.textMuted
        label: "Quit Tidemark"
        toolTip: "Quit Tidemark"
        reach: 3
        onPressed: header.popover.quit()
    }
}
