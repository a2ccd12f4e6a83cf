import QtQuick
import Tidemark.Controls
import Tidemark.Popover

/// Where the filter is typed.
TextField {
    id: field

    required property PopoverModel popover

    implicitHeight: Math.max(icon.implicitHeight, contentHeight) + 10
    leftPadding: icon.x + icon.implicitWidth + 6
    rightPadding: 10
    activeFocusOnTab: true
    maximumLength: 200
    label: "Filter projects..."
    value: popover.filter
    placeholderText: label
    placeholderTextColor: DS.textFaint
    color: DS.text
    selectionColor: Qt.rgba(1, 1, 1, 0.3)
    selectedTextColor: DS.text
    font.pixelSize: 12
    onEdited: text => popover.filter = text
    Keys.onEscapePressed: event => {
        event.accepted = text !== "";
        popover.filter = "";
    }
    Accessible.searchEdit: true

    /// Takes the keyboard, with what was typed elsewhere already.
    function type(text: string): void {
        forceActiveFocus(Qt.ShortcutFocusReason);
        insert(cursorPosition, text);
        popover.filter = field.text;
    }

    function takeFocus(): void {
        forceActiveFocus(Qt.ShortcutFocusReason);
        selectAll();
    }

    background: ContinuousRectangle {
        radius: 6
        color: DS.searchBg
        strokeColor: DS.borderSoft
        strokeWidth: 0.5
    }

    Symbol {
        id: icon

        x: 10
        anchors.verticalCenter: parent.verticalCenter
        name: "magnifyingglass"
        fontSize: 11
        color: DS.textDim
    }

    FocusRing {
        visible: field.activeFocus && Navigation.byKeyboard
        radius: 7
        strokeColor: DS.textMuted
    }
}
