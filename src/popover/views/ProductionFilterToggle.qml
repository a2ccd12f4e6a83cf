import QtQuick
import Tidemark.Controls
import Tidemark.Popover

/// Whether only production deployments are shown.
Pressable {
    id: toggle

    required property PopoverModel popover
    readonly property bool isOn: popover.productionOnly

    label: "Production only"
    toolTip: popover.productionToolTip
    implicitWidth: text.implicitWidth + 12
    implicitHeight: text.implicitHeight + 4
    reach: 3
    Accessible.role: Accessible.CheckBox
    Accessible.checkable: true
    Accessible.checked: isOn
    onPressed: popover.toggleProductionOnly()
    ring.strokeColor: DS.textMuted

    ContinuousRectangle {
        anchors.fill: parent
        radius: 3
        color: toggle.isOn ? Qt.rgba(DS.live.r, DS.live.g, DS.live.b, 0.15) : Qt.rgba(1, 1, 1, DS.borderSoft.a * 0.5)
        strokeColor: toggle.isOn ? Qt.rgba(DS.live.r, DS.live.g, DS.live.b, 0.4) : DS.borderSoft
        strokeWidth: 0.5
    }

    Label {
        id: text

        anchors.centerIn: parent
        text: "PROD"
        color: toggle.isOn ? DS.live : toggle.hovered ? DS.textMuted : DS.textFaint
        opacity: toggle.contentOpacity
        font.pixelSize: 9
        font.weight: Font.DemiBold
        font.letterSpacing: 0.5
    }
}
