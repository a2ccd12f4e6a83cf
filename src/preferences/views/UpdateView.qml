import QtQuick
import Tidemark.Controls
import Tidemark.Preferences

/// What the updater does, and what it may do.
FocusScope {
    id: view

    required property UpdateModel update

    /// Something that Return, pressed once too often, should not cancel.
    readonly property bool isUnderWay: update ? update.isBusy || update.hasProgress : false
    readonly property bool hasNotes: update ? update.notes !== "" : false

    /// Whether a key that is pressed here is meant for this window: one that came unasked waits for Tab or a click.
    property bool isArmed: update ? !update.isUnasked : false
    // A button that shows the focus takes Return itself.
    readonly property bool isOnButton: Navigation.byKeyboard && (Window.activeFocusItem as Pressable) !== null

    focus: true
    Component.onCompleted: takeFocus()

    /// The keyboard is with what Return does.
    function takeFocus(): void {
        if (!isArmed)
            rest.forceActiveFocus(Qt.OtherFocusReason);
        else if (goOn.visible)
            goOn.forceActiveFocus(Qt.OtherFocusReason);
        else
            close.forceActiveFocus(Qt.OtherFocusReason);
    }
    Keys.onTabPressed: event => {
        event.accepted = !isArmed;
        if (!isArmed) {
            isArmed = true;
            takeFocus();
        }
    }

    TapHandler {
        onPressedChanged: view.isArmed = true
    }

    Shortcut {
        sequences: ["Escape", "Ctrl+W"]
        autoRepeat: false
        onActivated: view.update.close()
    }

    Shortcut {
        sequences: ["Return", "Enter"]
        autoRepeat: false
        enabled: view.isArmed && !view.isOnButton
        onActivated: {
            if (goOn.visible)
                view.update.goOn();
            else if (!view.isUnderWay)
                view.update.close();
        }
    }

    FocusRest {
        id: rest
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
                anchors.verticalCenter: heading.verticalCenter
                width: 16
                height: 16
                visible: view.update ? view.update.isBusy : false
                color: Theme.secondary
            }

            SectionHeader {
                id: heading

                width: parent.width - (view.update && view.update.isBusy ? 26 : 0)
                maximumLineCount: 2
                elide: Text.ElideRight
                label: view.update ? view.update.title : ""
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
            activeFocusOnTab: view.hasNotes && contentHeight > height
            Accessible.role: Accessible.Document
            Accessible.name: "What is new"
            Keys.onPressed: event => {
                event.accepted = true;
                switch (event.key) {
                case Qt.Key_Up:
                    scrollBy(-24);
                    break;
                case Qt.Key_Down:
                    scrollBy(24);
                    break;
                case Qt.Key_PageUp:
                    scrollBy(-height);
                    break;
                case Qt.Key_PageDown:
                    scrollBy(height);
                    break;
                case Qt.Key_Home:
                    scrollBy(-contentHeight);
                    break;
                case Qt.Key_End:
                    scrollBy(contentHeight);
                    break;
                default:
                    event.accepted = false;
                }
            }

            BodyText {
                id: notes

                x: 12
                y: 10
                width: area.width - 24
                text: view.update ? view.update.notes : ""
            }
        }

        FocusOutline {
            radius: 8
            visible: area.activeFocus
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
            title: "Skip This Version"
            mnemonic: view.isArmed ? "K" : ""
            onPressed: view.update.skip()
        }

        PushButton {
            id: close

            anchors.right: goOn.visible ? goOn.left : parent.right
            anchors.rightMargin: goOn.visible ? 8 : 0
            title: view.update ? view.update.closeLabel : ""
            mnemonic: view.isArmed ? close.title.charAt(0) : ""
            isDefault: !goOn.visible && !view.isUnderWay
            onPressed: view.update.close()
        }

        PushButton {
            id: goOn

            anchors.right: parent.right
            visible: goOn.title !== ""
            onVisibleChanged: view.takeFocus()
            title: view.update ? view.update.goOnLabel : ""
            mnemonic: view.isArmed ? goOn.title.charAt(0) : ""
            isDefault: true
            onPressed: view.update.goOn()
        }
    }
}
