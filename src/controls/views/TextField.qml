pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T
import Tidemark.Controls

/// A line of text to edit, with the usual menu. A masked one keeps its text from the clipboard and from assistive
/// tools, and no input method learns from one that holds a token or an id.
T.TextField {
    id: field

    /// The name for screen readers.
    required property string label
    /// What is edited. Its owner may change an edit.
    required property string value
    property bool isMasked: false
    /// A token or an id: not a word of any language.
    property bool isCode: false
    readonly property TextFieldSupport support: TextFieldSupport {
        field: field
        label: field.label
        isMasked: field.isMasked
    }

    signal edited(text: string)

    implicitHeight: contentHeight + topPadding + bottomPadding
    clip: true
    verticalAlignment: TextInput.AlignVCenter
    maximumLength: 65536
    selectByMouse: true
    hoverEnabled: true
    echoMode: isMasked ? TextInput.Password : TextInput.Normal
    passwordMaskDelay: 0
    inputMethodHints: support.inputMethodHints(isCode)
    onValueChanged: show()
    onTextEdited: {
        edited(text);
        show();
    }
    Accessible.role: Accessible.EditableText
    Accessible.name: label
    Accessible.passwordEdit: isMasked
    Component.onCompleted: show()

    // A binding would not notice a value that comes out as it was before.
    function show(): void {
        if (text !== value)
            text = value;
    }

    // It does not blink, so that a window that nobody touches takes no time.
    cursorDelegate: Rectangle {
        width: 1
        visible: field.cursorVisible
        color: field.color
    }

    PlainText {
        anchors.fill: parent
        anchors.leftMargin: field.leftPadding
        anchors.rightMargin: field.rightPadding
        visible: field.length === 0 && field.preeditText === ""
        verticalAlignment: Text.AlignVCenter
        elide: Text.ElideRight
        text: field.placeholderText
        color: field.placeholderTextColor
        font: field.font
        Accessible.ignored: true
    }
}
