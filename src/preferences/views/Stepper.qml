import QtQuick
import Tidemark.Controls
import Tidemark.Preferences

/// A value that is changed in steps, by its two buttons or by the arrow keys.
FocusScope {
    id: stepper

    required property string label
    required property string valueText
    /// What assistive tools read; they change it by steps.
    required property real value
    required property real minimumValue
    required property real maximumValue
    required property real stepSize
    required property bool canIncrease
    required property bool canDecrease

    /// Up, or down where they are negative; no further than there are any.
    signal stepped(steps: int)

    implicitWidth: text.implicitWidth + 8 + buttons.width
    implicitHeight: buttons.height
    activeFocusOnTab: true
    Accessible.role: Accessible.SpinBox
    Accessible.name: label
    Accessible.description: valueText
    Accessible.focusable: true
    Accessible.onIncreaseAction: stepped(1)
    Accessible.onDecreaseAction: stepped(-1)
    Keys.onUpPressed: stepped(1)
    Keys.onDownPressed: stepped(-1)
    Keys.onPressed: event => {
        event.accepted = true;
        switch (event.key) {
        case Qt.Key_PageUp:
            stepped(5);
            break;
        case Qt.Key_PageDown:
            stepped(-5);
            break;
        case Qt.Key_End:
            stepped(1000);
            break;
        case Qt.Key_Home:
            stepped(-1000);
            break;
        default:
            event.accepted = false;
        }
    }

    BodyText {
        id: text

        anchors.verticalCenter: parent.verticalCenter
        text: stepper.valueText
    }

    Frame {
        id: buttons

        anchors.left: text.right
        anchors.leftMargin: 8
        width: 20
        height: 28
        radius: 5
        color: Theme.button
        outline: Theme.fieldOutline

        StepButton {
            width: parent.width
            height: parent.height / 2
            symbol: "chevron.up"
            enabled: stepper.canIncrease
            onStepped: stepper.stepped(1)
            onTouched: stepper.forceActiveFocus(Qt.MouseFocusReason)
        }

        StepButton {
            y: parent.height / 2
            width: parent.width
            height: parent.height / 2
            symbol: "chevron.down"
            enabled: stepper.canDecrease
            onStepped: stepper.stepped(-1)
            onTouched: stepper.forceActiveFocus(Qt.MouseFocusReason)
        }

        FocusOutline {
            reach: 3
            radius: 8
            visible: stepper.activeFocus && Navigation.byKeyboard
        }
    }
}
