pragma ComponentBehavior: Bound

import QtQuick
import Tidemark.Controls
import Tidemark.Preferences

/// The editor of the whole configuration.
FocusScope {
    id: editor

    required property PreferencesModel preferences

    readonly property bool canSave: preferences ? preferences.canSave : false

    focus: true
    Component.onCompleted: accounts.focusFirst(Qt.OtherFocusReason)

    // A button that shows the focus takes Return itself.
    readonly property bool isOnButton: Navigation.byKeyboard && (Window.activeFocusItem as Pressable) !== null

    Shortcut {
        sequences: ["Return", "Enter"]
        autoRepeat: false
        enabled: editor.canSave && !editor.isOnButton
        onActivated: editor.preferences.save()
    }

    Shortcut {
        sequences: ["Escape", "Ctrl+W"]
        autoRepeat: false
        onActivated: editor.preferences.cancel()
    }

    Shortcut {
        sequence: "Alt+V"
        onActivated: accounts.focusFirst(Qt.ShortcutFocusReason)
    }

    Shortcut {
        sequence: "Alt+T"
        onActivated: cloudflareToken.field.forceActiveFocus(Qt.ShortcutFocusReason)
    }

    Shortcut {
        sequence: "Alt+I"
        onActivated: interval.forceActiveFocus(Qt.ShortcutFocusReason)
    }

    Item {
        id: header

        width: parent.width
        height: 20 + Math.max(dot.height, title.height) + 12

        Symbol {
            id: dot

            x: 20
            y: 20 + (Math.max(height, title.height) - height) / 2
            name: "circle.fill"
            fontSize: Theme.title2Size
            color: Theme.green
        }

        BodyText {
            id: title

            anchors.left: dot.right
            anchors.leftMargin: 8
            anchors.verticalCenter: dot.verticalCenter
            text: "Tidemark"
            font.bold: true
        }
    }

    Divider {
        id: headerEdge

        color: Theme.divider
        anchors.top: header.bottom
        width: parent.width
    }

    ScrollArea {
        id: area

        anchors.top: headerEdge.bottom
        anchors.bottom: footerEdge.top
        width: parent.width
        contentHeight: sections.implicitHeight + 40

        Column {
            id: sections

            x: 20
            y: 20
            width: area.width - 40
            spacing: 20

            Explanation {
                width: parent.width
                visible: text !== ""
                text: editor.preferences ? editor.preferences.notice : ""
                color: Theme.red
            }

            Column {
                width: parent.width
                spacing: 10

                SectionHeader {
                    label: "Vercel Accounts"
                    mnemonic: "V"
                }

                Explanation {
                    width: parent.width
                    text: "Add one entry per Vercel account. Each account has its own API token and team ID."
                }

                Column {
                    id: accounts

                    width: parent.width
                    spacing: 10

                    Repeater {
                        id: cards

                        model: editor.preferences ? editor.preferences.accounts : null

                        AccountCard {
                            id: account

                            width: accounts.width
                            onRemoved: accounts.remove(account.card.id)
                            onPageRequested: editor.preferences.openVercelTokens()
                        }
                    }

                    /// The first card that waits for a token gets the keyboard at its token, else the first one at
                    /// its name.
                    function focusFirst(reason: int): void {
                        const waiting = editor.preferences.firstWithoutToken();
                        const card = cards.itemAt(Math.max(waiting, 0)) as AccountCard;
                        if (card && waiting >= 0)
                            card.tokenField.forceActiveFocus(reason);
                        else if (card)
                            card.nameField.forceActiveFocus(reason);
                    }

                    function add(): void {
                        editor.preferences.addAccount();
                        const card = cards.itemAt(cards.count - 1) as AccountCard;
                        if (card)
                            card.nameField.forceActiveFocus(Qt.OtherFocusReason);
                    }

                    function remove(id: string): void {
                        // Before it goes with what has it.
                        addAccount.forceActiveFocus(Qt.OtherFocusReason);
                        editor.preferences.removeAccount(id);
                    }
                }

                PlainButton {
                    id: addAccount

                    symbol: "plus.circle"
                    title: "Add Account"
                    mnemonic: "A"
                    ink: Theme.accent
                    fontSize: 13
                    onPressed: accounts.add()
                }
            }

            Divider {
                color: Theme.divider
                width: parent.width
            }

            Column {
                width: parent.width
                spacing: 8

                SectionHeader {
                    label: "Cloudflare API Token"
                    mnemonic: "T"
                }

                TokenField {
                    id: cloudflareToken

                    width: parent.width
                    label: "Cloudflare API Token"
                    placeholder: "cfut_…"
                    value: editor.preferences ? editor.preferences.cloudflareToken : ""
                    isShown: editor.preferences ? editor.preferences.showCFToken : false
                    onEdited: text => editor.preferences.cloudflareToken = text
                    onToggled: editor.preferences.showCFToken = !editor.preferences.showCFToken
                }

                Explanation {
                    width: parent.width
                    visible: text !== ""
                    text: editor.preferences ? editor.preferences.cloudflareTokenNotice : ""
                    color: Theme.red
                }

                PageLink {
                    title: "Create a token on Cloudflare's API tokens page"
                    onPressed: editor.preferences.openCloudflareTokens()
                }

                Explanation {
                    width: parent.width
                    text: "Used for web analytics. Requires \"Read analytics and logs\" permission."
                }
            }

            Divider {
                color: Theme.divider
                width: parent.width
            }

            Column {
                width: parent.width
                spacing: 8

                SectionHeader {
                    label: "Polling Interval"
                    mnemonic: "I"
                }

                Stepper {
                    id: interval

                    label: "Polling Interval"
                    valueText: editor.preferences ? editor.preferences.pollingIntervalText : ""
                    value: editor.preferences ? editor.preferences.pollingInterval : 0
                    minimumValue: editor.preferences ? editor.preferences.shortestInterval : 0
                    maximumValue: editor.preferences ? editor.preferences.longestInterval : 0
                    stepSize: editor.preferences ? editor.preferences.intervalStep : 0
                    canIncrease: editor.preferences ? editor.preferences.canLengthen : false
                    canDecrease: editor.preferences ? editor.preferences.canShorten : false
                    onStepped: steps => editor.preferences.stepInterval(steps)
                }
            }

            Divider {
                color: Theme.divider
                width: parent.width
            }

            Column {
                width: parent.width
                spacing: 8

                SectionHeader {
                    label: "Updates"
                }

                UpdatesBlock {
                    width: parent.width
                    updates: editor.preferences ? editor.preferences.updates : null
                }
            }

            Divider {
                color: Theme.divider
                width: parent.width
            }

            Column {
                width: parent.width
                spacing: 8

                SectionHeader {
                    label: "General"
                }

                CheckOption {
                    title: "Launch at login"
                    mnemonic: "L"
                    isOn: editor.preferences ? editor.preferences.launchAtLogin : false
                    onPressed: editor.preferences.launchAtLogin = !isOn
                }

                CheckOption {
                    title: "Play sounds on deployment events"
                    mnemonic: "P"
                    isOn: editor.preferences ? editor.preferences.soundEnabled : false
                    onPressed: editor.preferences.soundEnabled = !isOn
                }

                Explanation {
                    width: parent.width
                    text: "Plays a chime when a deployment goes live, and a thud on failure."
                }
            }
        }
    }

    Divider {
        id: footerEdge

        color: Theme.divider
        anchors.bottom: footer.top
        width: parent.width
    }

    Item {
        id: footer

        anchors.bottom: parent.bottom
        width: parent.width
        height: save.height + 32

        PushButton {
            id: cancel

            anchors.right: save.left
            anchors.rightMargin: 8
            anchors.verticalCenter: parent.verticalCenter
            title: "Cancel"
            mnemonic: "C"
            onPressed: editor.preferences.cancel()
        }

        PushButton {
            id: save

            anchors.right: parent.right
            anchors.rightMargin: 16
            anchors.verticalCenter: parent.verticalCenter
            title: "Save"
            mnemonic: "S"
            isDefault: true
            enabled: editor.canSave
            onPressed: editor.preferences.save()
        }
    }
}
