pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T
import Tidemark.Preferences

/// A line of text to edit. A masked one keeps to itself what it holds, and no field lets an input method learn
/// from it.
T.TextField {
    id: field

    /// What a screen reader says.
    required property string label
    property bool isMasked: false
    /// A token or an id: not a word of any language.
    property bool isCode: false

    implicitHeight: Math.max(26, contentHeight + topPadding + bottomPadding)
    topPadding: 4
    bottomPadding: 4
    leftPadding: 7
    rightPadding: 7
    clip: true
    verticalAlignment: TextInput.AlignVCenter
    maximumLength: 4096
    selectByMouse: true
    echoMode: isMasked ? TextInput.Password : TextInput.Normal
    passwordMaskDelay: 0
    inputMethodHints: isCode ? Theme.codeInputHints : Qt.ImhNone
    color: Theme.text
    selectionColor: Theme.accentFill
    selectedTextColor: Theme.accentFillText
    placeholderTextColor: Theme.placeholder
    font.pixelSize: Theme.bodySize
    font.family: isCode ? Theme.monospaced : Theme.family
    Accessible.name: label
    Accessible.passwordEdit: isMasked

    cursorDelegate: Rectangle {
        width: 1
        visible: field.cursorVisible
        color: Theme.text
    }
    background: Rectangle {
        radius: 5
        color: Theme.field
        border.width: field.activeFocus ? 2 : 1
        border.color: field.activeFocus ? Theme.accentFill : field.hovered ? Theme.placeholder : Theme.fieldOutline
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
