import QtQuick
import Tidemark.Preferences

/// A token, masked unless it is to be shown, and the button that shows and hides it.
Item {
    id: token

    required property string label
    required property string placeholder
    required property string value
    required property bool isShown
    /// Of the button.
    property int buttonSize: Theme.bodySize
    property alias field: entry

    signal edited(text: string)
    signal toggled

    implicitHeight: entry.implicitHeight

    EntryField {
        id: entry

        anchors.left: parent.left
        anchors.right: parent.right
        // For either word, so that the field keeps its width.
        anchors.rightMargin: Math.max(shown.width, hidden.width) + 8
        label: token.label
        isCode: true
        isMasked: !token.isShown
        placeholderText: token.placeholder
        value: token.value
        onEdited: text => token.edited(text)
    }

    PlainButton {
        id: button

        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        title: token.isShown ? "Hide" : "Show"
        label: title + " " + token.label
        fontSize: token.buttonSize
        onPressed: token.toggled()
    }

    TextMetrics {
        id: shown

        text: "Hide"
        font.pixelSize: token.buttonSize
    }

    TextMetrics {
        id: hidden

        text: "Show"
        font.pixelSize: token.buttonSize
    }
}
