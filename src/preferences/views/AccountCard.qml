import QtQuick
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

            IconButton {
                id: remove

                anchors.right: parent.right
                anchors.verticalCenter: parent.verticalCenter
                label: "Remove this account"
                toolTip: label
                symbol: "minus.circle.fill"
                fontSize: 16
                ink: Qt.rgba(Theme.red.r, Theme.red.g, Theme.red.b, 0.75)
                hoverInk: Theme.red
                ring.reach: 2
                ring.radius: width / 2
                ring.strokeWidth: 2
                ring.strokeColor: Theme.accentFill
                Accessible.description: frame.owner
                onPressed: frame.removed()
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

        Explanation {
            x: frame.indent
            width: parent.width - x
            visible: text !== ""
            text: frame.card ? frame.card.tokenNotice : ""
            color: Theme.red
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
            title: "Create a token in Vercel's account settings"
            onPressed: frame.pageRequested()
        }
    }
}
