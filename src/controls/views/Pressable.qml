import QtQuick
import Tidemark.Controls

/// The base of everything that can be pressed, with the pointer, the keyboard or an assistive tool. Its only look is
/// the focus ring. (The templates of Qt Quick do not let a control choose its role before Qt 6.8.)
Item {
    id: control

    /// The name for screen readers.
    required property string label
    property string toolTip
    /// How far around it a click still counts.
    property real reach: 0
    /// The letter that presses it with Alt; empty for none.
    property string mnemonic
    property alias ring: ring
    readonly property alias hovered: hover.hovered
    readonly property alias down: area.containsPress
    /// The focus is here, and the user can see it.
    readonly property bool showsFocus: activeFocus && Navigation.byKeyboard
    /// Of what is drawn on it.
    readonly property real contentOpacity: down ? 0.6 : 1

    signal pressed

    activeFocusOnTab: true
    Accessible.role: Accessible.Button
    Accessible.name: label
    Accessible.description: toolTip
    Accessible.focusable: true
    Accessible.onPressAction: {
        if (enabled)
            control.pressed();
    }
    Accessible.onToggleAction: {
        if (enabled)
            control.pressed();
    }
    Keys.onPressed: event => {
        const isOurs = event.key === Qt.Key_Space || event.key === Qt.Key_Return || event.key === Qt.Key_Enter;
        event.accepted = isOurs;
        // A key that is held presses once.
        if (isOurs && !event.isAutoRepeat)
            control.pressed();
    }

    HoverTip {
        id: hover

        text: control.toolTip
    }

    MouseArea {
        id: area

        property bool isClicked: false

        anchors.fill: parent
        anchors.margins: -control.reach
        onPressed: control.forceActiveFocus(Qt.MouseFocusReason)
        onClicked: {
            isClicked = true;
            control.pressed();
        }
        // The second half of a double click that began on something else, which has moved away, is not meant.
        onDoubleClicked: {
            if (isClicked)
                control.pressed();
        }
    }

    FocusRing {
        id: ring

        visible: control.showsFocus
    }
}
