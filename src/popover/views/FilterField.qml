pragma ComponentBehavior: Bound

import QtQuick
import Tidemark.Controls
import Tidemark.Popover

/// Where the filter is typed.
FocusScope {
    id: field

    required property PopoverModel popover

    implicitHeight: Math.max(icon.implicitHeight, input.implicitHeight) + 10

    /// Takes the keyboard, with what was typed elsewhere already.
    function type(text: string): void {
        input.forceActiveFocus(Qt.ShortcutFocusReason);
        input.insert(input.cursorPosition, text);
    }

    function takeFocus(): void {
        input.forceActiveFocus(Qt.ShortcutFocusReason);
        input.selectAll();
    }

    ContinuousRectangle {
        anchors.fill: parent
        radius: 6
        color: DS.searchBg
        strokeColor: DS.borderSoft
        strokeWidth: 0.5
    }

    // Beside the text, too, a click begins to type.
    MouseArea {
        anchors.fill: parent
        cursorShape: Qt.IBeamCursor
        onPressed: input.forceActiveFocus(Qt.MouseFocusReason)
    }

    Symbol {
        id: icon

        x: 10
        anchors.verticalCenter: parent.verticalCenter
        name: "magnifyingglass"
        fontSize: 11
        color: DS.textDim
    }

    TextInput {
        id: input

        anchors.left: icon.right
        anchors.leftMargin: 6
        anchors.right: parent.right
        anchors.rightMargin: 10
        anchors.verticalCenter: parent.verticalCenter
        focus: true
        activeFocusOnTab: true
        clip: true
        maximumLength: 200
        selectByMouse: true
        color: DS.text
        selectionColor: Qt.rgba(1, 1, 1, 0.3)
        selectedTextColor: DS.text
        font.pixelSize: 12
        text: field.popover.filter
        onTextEdited: field.popover.filter = text
        // It does not blink: a popover that nobody touches takes no time.
        cursorDelegate: Rectangle {
            width: 1
            visible: input.activeFocus
            color: DS.text
        }
        Keys.onEscapePressed: event => {
            event.accepted = text !== "";
            field.popover.filter = "";
        }
        Accessible.role: Accessible.EditableText
        Accessible.name: placeholder.text
        Accessible.searchEdit: true
    }

    Label {
        id: placeholder

        anchors.fill: input
        verticalAlignment: Text.AlignVCenter
        visible: input.text === "" && input.preeditText === ""
        text: "Filter projects..."
        color: DS.textFaint
        font.pixelSize: 12
    }

    FocusRing {
        visible: field.activeFocus && Navigation.byKeyboard
        radius: 7
        strokeColor: DS.textMuted
    }
}
