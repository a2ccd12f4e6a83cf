pragma ComponentBehavior: Bound

import QtQuick
import Tidemark.Popover

/// The manage screen.
PanelScreen {
    id: panel

    required property PopoverModel popover

    signal back

    hasHeaderDivider: false
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

    header: Item {
        width: parent.width
        height: childrenRect.height

        Label {
            anchors.verticalCenter: back.verticalCenter
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
        y: 8
        width: parent.width - 28
        height: implicitHeight
        focus: true
        popover: panel.popover
    }

    Item {
        id: projects

        anchors.top: filter.bottom
        anchors.topMargin: 4
        width: parent.width
        height: list.count > 0 ? list.implicitHeight : nothing.implicitHeight

        ProjectList {
            id: list

            width: parent.width
            height: implicitHeight
            maximumHeight: Math.max(60, Math.min(300, panel.contentSpace - projects.y))
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

    footerLine: hint.implicitHeight
    footer: [
        Label {
            id: hint

            anchors.verticalCenter: parent.verticalCenter
            text: "Changes save automatically"
            color: DS.textDim
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        },
        FooterButton {
            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            title: "Done"
            ink: DS.live
            hoverInk: Qt.lighter(DS.live, 1.2)
            weight: Font.Medium
            onPressed: panel.back()
        }
    ]
}
