import QtQuick
import QtQuick.Templates as T
import Tidemark.Controls
import Tidemark.Preferences

/// The card of one account. Every edit goes to its draft at once.
ContinuousRectangle {
    id: frame

    required property AccountCardModel card
    /// Where a new token is pasted.
    property alias tokenField: token.field
    property alias nameField: name

    readonly property real column: 42
    readonly property real indent: 48
    /// What a screen reader says of whose field it is.
    readonly property string owner: card ? card.name : ""

    signal removed
    signal pageRequested

    implicitHeight: rows.implicitHeight + 28
    radius: 10
    color: Theme.cardFill
    strokeColor: Theme.cardOutline
    strokeWidth: 1

    Column {
        id: rows

        x: 14
        y: 14
        width: parent.width - 28
        spacing: 8

        Item {
            width: parent.width
            height: name.implicitHeight

            Symbol {
                id: person

                anchors.verticalCenter: parent.verticalCenter
                name: "person.circle"
                fontSize: 13
                color: Theme.secondary
            }

            EntryField {
                id: name

                anchors.left: person.right
                anchors.leftMargin: 6
                anchors.right: remove.left
                anchors.rightMargin: 8
                label: "Account name"
                placeholderText: "Account name (e.g. Personal, Work)"
                value: frame.card ? frame.card.name : ""
                onEdited: text => frame.card.name = text
            }

            T.AbstractButton {
                id: remove

                anchors.right: parent.right
                anchors.verticalCenter: parent.verticalCenter
                implicitWidth: implicitContentWidth
                implicitHeight: implicitContentHeight
                focusPolicy: Qt.StrongFocus
                Accessible.name: "Remove this account"
                Accessible.description: frame.owner
                onClicked: frame.removed()

                contentItem: Symbol {
                    name: "minus.circle.fill"
                    fontSize: 16
                    color: Qt.rgba(Theme.red.r, Theme.red.g, Theme.red.b, remove.down ? 0.5 : hover.hovered ? 1 : 0.75)
                }
                background: Item {
                    FocusOutline {
                        radius: width / 2
                        visible: remove.visualFocus
                    }
                }

                HoverTip {
                    id: hover

                    text: "Remove this account"
                }
            }
        }

        Item {
            width: parent.width
            height: token.implicitHeight

            CardLabel {
                anchors.verticalCenter: parent.verticalCenter
                width: frame.column
                text: "Token"
            }

            TokenField {
                id: token

                x: frame.indent
                width: parent.width - x
                label: frame.owner === "" ? "Token" : "Token of " + frame.owner
                placeholder: "vcp_…"
                value: frame.card ? frame.card.apiToken : ""
                isShown: frame.card ? frame.card.showToken : false
                buttonSize: Theme.captionSize
                onEdited: text => frame.card.apiToken = text
                onToggled: frame.card.showToken = !frame.card.showToken
            }
        }

        Item {
            width: parent.width
            height: team.implicitHeight

            CardLabel {
                anchors.verticalCenter: parent.verticalCenter
                width: frame.column
                text: "Team ID"
            }

            EntryField {
                id: team

                x: frame.indent
                width: parent.width - x
                label: frame.owner === "" ? "Team ID" : "Team ID of " + frame.owner
                isCode: true
                placeholderText: "team_…"
                value: frame.card ? frame.card.teamId : ""
                onEdited: text => frame.card.teamId = text
            }
        }

        PageLink {
            x: frame.indent
            text: "Create a token in Vercel's account settings"
            onClicked: frame.pageRequested()
        }
    }
}
