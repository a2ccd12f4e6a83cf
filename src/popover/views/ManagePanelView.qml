pragma ComponentBehavior: Bound

import QtQuick
import Tidemark.Controls
import Tidemark.Popover

/// The manage screen.
FocusScope {
    id: panel

    required property PopoverModel popover
    required property real maximumHeight

    signal back

    implicitHeight: footer.y + footer.height
    Component.onCompleted: popover.filter = ""

    Keys.onDownPressed: list.focusRow(list.currentIndex)
    Keys.onUpPressed: filter.takeFocus()
    Keys.onPressed: event => {
        if (event.matches(StandardKey.Find)) {
            filter.takeFocus();
            event.accepted = true;
        } else if (event.matches(StandardKey.Back)) {
            panel.back();
            event.accepted = true;
        } else if (event.text > " " && event.text !== "\u007f"
                   && !(event.modifiers & (Qt.ControlModifier | Qt.AltModifier | Qt.MetaModifier))) {
            filter.type(event.text);
            event.accepted = true;
        }
    }

    Item {
        id: header

        x: 14
        y: 11
        width: parent.width - 28
        height: Math.max(title.implicitHeight, back.implicitHeight)

        Label {
            id: title

            anchors.verticalCenter: parent.verticalCenter
            text: "MANAGE PROJECTS"
            color: DS.textMuted
            font.weight: Font.DemiBold
            font.letterSpacing: 1
            Accessible.role: Accessible.Heading
            Accessible.name: "Manage projects"
        }

        FooterButton {
            id: back

            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            symbol: "chevron.left"
            symbolSize: 10
            gap: 3
            title: "Back"
            onPressed: panel.back()
        }
    }

    FilterField {
        id: filter

        x: 14
        y: header.y + header.height + 9 + 8
        width: parent.width - 28
        height: implicitHeight
        focus: true
        popover: panel.popover
    }

    Item {
        id: content

        y: filter.y + filter.height + 4
        width: parent.width
        height: list.count > 0 ? list.implicitHeight : nothing.implicitHeight

        ProjectList {
            id: list

            width: parent.width
            height: implicitHeight
            maximumHeight: Math.max(60, Math.min(300, panel.maximumHeight - content.y - 1 - footer.height))
            model: panel.popover.managedProjects
            Accessible.name: "Projects"
            section.property: "section"
            delegate: ManageRow {
                list: list
                width: list.width
                popover: panel.popover
            }
        }

        Notice {
            id: nothing

            width: parent.width
            visible: list.count === 0
            text: "No projects match your filter."
        }
    }

    Divider {
        id: divider

        color: DS.borderSoft
        opacity: 0.4
        anchors.top: content.bottom
        width: parent.width
    }

    Item {
        id: footer

        anchors.top: divider.bottom
        width: parent.width
        height: 16 + hint.implicitHeight

        Label {
            id: hint

            x: 14
            anchors.verticalCenter: parent.verticalCenter
            text: "Changes save automatically"
            color: DS.textDim
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }

        FooterButton {
            anchors.right: parent.right
            anchors.rightMargin: 14
            anchors.verticalCenter: parent.verticalCenter
            title: "Done"
            ink: DS.live
            hoverInk: Qt.lighter(DS.live, 1.2)
            weight: Font.Medium
            onPressed: panel.back()
        }
    }
}
