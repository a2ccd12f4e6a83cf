import QtQuick
import Tidemark.Preferences

/// A value that is changed in steps, by its two buttons or by the arrow keys.
FocusScope {
    id: stepper

    required property string label
    required property string valueText
    required property bool canIncrease
    required property bool canDecrease

    signal increased
    signal decreased

    implicitWidth: text.implicitWidth + 8 + buttons.width
    implicitHeight: buttons.height
    activeFocusOnTab: true
    Accessible.role: Accessible.SpinBox
    Accessible.name: label
    Accessible.description: valueText
    Accessible.focusable: true
    Accessible.onIncreaseAction: increase()
    Accessible.onDecreaseAction: decrease()
    Keys.onUpPressed: increase()
    Keys.onDownPressed: decrease()

    function increase(): void {
        if (canIncrease)
            increased();
    }

    function decrease(): void {
        if (canDecrease)
            decreased();
    }

    BodyText {
        id: text

        anchors.verticalCenter: parent.verticalCenter
        text: stepper.valueText
    }

    Rectangle {
        id: buttons

        anchors.left: text.right
        anchors.leftMargin: 8
        width: 20
        height: 28
        radius: 5
        color: Theme.button
        border.width: 1
        border.color: Theme.fieldOutline

        StepButton {
            width: parent.width
            height: parent.height / 2
            symbol: "chevron.up"
            enabled: stepper.canIncrease
            onStepped: stepper.increase()
            onTouched: stepper.forceActiveFocus(Qt.MouseFocusReason)
        }

        StepButton {
            y: parent.height / 2
            width: parent.width
            height: parent.height / 2
            symbol: "chevron.down"
            enabled: stepper.canDecrease
            onStepped: stepper.decrease()
            onTouched: stepper.forceActiveFocus(Qt.MouseFocusReason)
        }

        FocusOutline {
            anchors.margins: -3
            radius: 8
            visible: stepper.activeFocus
        }
    }
}
