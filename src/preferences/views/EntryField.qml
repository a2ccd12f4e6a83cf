pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T
import Tidemark.Controls
import Tidemark.Preferences

/// A line of text to edit. A masked one keeps to itself what it holds, and from none that holds a token or an
/// id an input method learns.
T.TextField {
    id: field

    /// What a screen reader says.
    required property string label
    /// What is edited. It may take an edit over otherwise than it was typed.
    required property string value
    property bool isMasked: false
    /// A token or an id: not a word of any language.
    property bool isCode: false

    signal edited(text: string)

    implicitHeight: Math.max(26, contentHeight + topPadding + bottomPadding)
    topPadding: 4
    bottomPadding: 4
    leftPadding: 7
    rightPadding: 7
    clip: true
    verticalAlignment: TextInput.AlignVCenter
    maximumLength: 65536
    selectByMouse: true
    echoMode: isMasked ? TextInput.Password : TextInput.Normal
    passwordMaskDelay: 0
    inputMethodHints: isCode ? Theme.codeInputHints : Qt.ImhNone
    color: Theme.text
    selectionColor: Theme.accentFill
    selectedTextColor: Theme.accentFillText
    placeholderTextColor: Theme.placeholder
    onValueChanged: show()
    onTextEdited: {
        edited(text);
        show();
    }
    font.pixelSize: Theme.bodySize
    font.family: isCode ? Theme.monospaced : Theme.family
    Accessible.role: Accessible.EditableText
    Accessible.name: label
    Accessible.passwordEdit: isMasked

    Component.onCompleted: {
        show();
        MaskedFieldAccessible.update(field);
    }
    onIsMaskedChanged: MaskedFieldAccessible.update(field)

    // A binding would not notice a value that comes out as it was before.
    function show(): void {
        if (text !== value)
            text = value;
    }

    cursorDelegate: Rectangle {
        width: 1
        visible: field.cursorVisible
        color: Theme.text
    }
    background: Frame {
        radius: 5
        color: Theme.field
        thickness: field.activeFocus ? 2 : 1
        outline: field.activeFocus ? Theme.accentFill : field.hovered ? Theme.placeholder : Theme.fieldOutline
    }

    Text {
        anchors.fill: parent
        anchors.leftMargin: field.leftPadding
        anchors.rightMargin: field.rightPadding
        visible: field.length === 0 && field.preeditText === ""
        verticalAlignment: Text.AlignVCenter
        textFormat: Text.PlainText
        elide: Text.ElideRight
        text: field.placeholderText
        color: field.placeholderTextColor
        font: field.font
        Accessible.ignored: true
    }
}
