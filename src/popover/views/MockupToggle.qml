import QtQuick
import Tidemark.Controls
import Tidemark.Popover

/// A switch: a knob on a track.
Pressable {
    id: toggle

    required property bool isOn
    /// Only what the user does is animated.
    property bool isAnimated: false

    implicitWidth: 28
    implicitHeight: 16
    Accessible.role: Accessible.CheckBox
    Accessible.checkable: true
    Accessible.checked: isOn
    onPressed: isAnimated = true
    ring.radius: 10
    ring.strokeColor: DS.textMuted

    ContinuousRectangle {
        anchors.fill: parent
        radius: 8
        color: toggle.isOn ? DS.dotGreen : "#444444"

        Behavior on color {
            enabled: toggle.isAnimated

            ColorAnimation {
                duration: 150
                easing.type: Easing.InOutQuad
            }
        }
    }

    Dot {
        x: toggle.isOn ? 14 : 2
        y: 2
        size: 12
        color: "white"

        Behavior on x {
            enabled: toggle.isAnimated

            NumberAnimation {
                duration: 150
                easing.type: Easing.InOutQuad
            }
        }
    }
}
