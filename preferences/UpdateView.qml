import QtQuick
import Tidemark.Drawing
import Tidemark.Preferences

/// What the updater does, and what it may do.
FocusScope {
    id: view

    required property UpdateModel update

    readonly property bool hasNotes: update ? update.notes !== "" : false

    focus: true
    Component.onCompleted: close.forceActiveFocus(Qt.OtherFocusReason)

    Shortcut {
        sequences: ["Escape", "Ctrl+W"]
        onActivated: view.update.close()
    }

    Shortcut {
        sequences: ["Return", "Enter"]
        onActivated: {
            if (goOn.visible && !close.visualFocus && !skip.visualFocus)
                view.update.goOn();
            else if (skip.visualFocus)
                view.update.skip();
            else
                view.update.close();
        }
    }

    Column {
        id: texts

        x: 20
        y: 20
        width: parent.width - 40
        spacing: 8

        Row {
            width: parent.width
            spacing: 10

            Spinner {
                anchors.verticalCenter: title.verticalCenter
                width: 16
                height: 16
                visible: view.update ? view.update.isBusy : false
                color: Theme.secondary
            }

            SectionHeader {
                id: title

                width: parent.width - (view.update && view.update.isBusy ? 26 : 0)
                maximumLineCount: 2
                elide: Text.ElideRight
                text: view.update ? view.update.title : ""
            }
        }

        ProgressLine {
            width: parent.width
            visible: view.update ? view.update.hasProgress : false
            value: view.update ? view.update.progress : 0
        }

        BodyText {
            width: parent.width
            visible: text !== ""
            maximumLineCount: 3
            elide: Text.ElideRight
            text: view.update ? view.update.detail : ""
            color: Theme.secondary
        }
    }

    Rectangle {
        anchors.top: texts.bottom
        anchors.topMargin: 12
        anchors.bottom: buttons.top
        anchors.bottomMargin: 14
        x: 20
        width: parent.width - 40
        visible: view.hasNotes
        radius: 6
        color: Theme.field
        border.width: 1
        border.color: Theme.divider

        ScrollArea {
            id: area

            anchors.fill: parent
            anchors.margins: 1
            contentHeight: notes.implicitHeight + 20
            activeFocusOnTab: view.hasNotes
            Keys.onUpPressed: contentY = Math.max(0, contentY - 24)
            Keys.onDownPressed: contentY = Math.max(0, Math.min(contentHeight - height, contentY + 24))

            BodyText {
                id: notes

                x: 12
                y: 10
                width: area.width - 24
                text: view.update ? view.update.notes : ""
            }
        }
    }

    Item {
        id: buttons

        anchors.bottom: parent.bottom
        anchors.bottomMargin: 16
        x: 20
        width: parent.width - 40
        height: close.height

        PushButton {
            id: skip

            visible: view.update ? view.update.canSkip : false
            text: "Skip This Version"
            mnemonic: "K"
            onClicked: view.update.skip()
        }

        PushButton {
            id: close

            anchors.right: goOn.visible ? goOn.left : parent.right
            anchors.rightMargin: goOn.visible ? 8 : 0
            text: view.update ? view.update.closeLabel : ""
            mnemonic: text.charAt(0)
            isDefault: !goOn.visible
            onClicked: view.update.close()
        }

        PushButton {
            id: goOn

            anchors.right: parent.right
            visible: text !== ""
            text: view.update ? view.update.goOnLabel : ""
            mnemonic: text.charAt(0)
            isDefault: true
            onClicked: view.update.goOn()
        }
    }
}
