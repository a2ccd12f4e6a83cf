import QtQuick
import Tidemark.Controls
import Tidemark.Popover

/// Around the control that the keyboard acts on.
ContinuousRectangle {
    anchors.fill: parent
    anchors.margins: -2
    visible: parent.activeFocus && Navigation.byKeyboard
    z: 1
    radius: 5
    strokeWidth: 1.5
    strokeColor: DS.textMuted
}
