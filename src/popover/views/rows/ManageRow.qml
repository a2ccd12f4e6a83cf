import QtQuick
import Tidemark.Controls
import Tidemark.Popover

/// One project of the manage panel.
ProjectListRow {
    id: row

    required property string rowId
    required property PopoverModel popover

    /// The first row of a section has the section's caption above it.
    readonly property bool isFirst: ListView.section !== ListView.previousSection

    implicitHeight: line.y + line.height

    function takeFocus(): void {
        track.forceActiveFocus(Qt.TabFocusReason);
    }

    onRowIdChanged: track.isAnimated = false
    Accessible.role: Accessible.ListItem
    Accessible.name: project.row.deployedText === "" ? project.row.name : project.row.name + ", " + project.row.deployedText

    ManageRowModel {
        id: project

        popover: row.popover
        rowId: row.rowId
    }

    SectionLabel {
        id: caption

        width: row.width
        visible: row.isFirst
        caption: row.ListView.section
    }

    Item {
        id: line

        y: row.isFirst ? caption.implicitHeight : 0
        width: row.width
        height: 14 + lines.height

        HoverHandler {
            id: hover
        }

        Rectangle {
            anchors.fill: parent
            visible: hover.hovered
            color: DS.hover
        }

        Dot {
            id: dot

            x: 14
            anchors.verticalCenter: parent.verticalCenter
            size: 7
            color: project.row.dotColor
        }

        Item {
            id: lines

            anchors.left: dot.right
            anchors.leftMargin: 9
            anchors.right: project.row.isTracked ? pin.left : track.left
            anchors.rightMargin: 9
            y: 7
            height: name.implicitHeight + (project.row.deployedText !== "" ? 1 + deployed.implicitHeight : 0)

            Label {
                id: name

                width: parent.width
                text: project.row.name
                color: project.row.isTracked ? DS.text : DS.textFaint
                font.pixelSize: 13

                HoverTip {
                    text: name.truncated ? project.row.name : ""
                }
            }

            Label {
                id: deployed

                anchors.bottom: parent.bottom
                width: parent.width
                visible: text !== ""
                text: project.row.deployedText
                color: DS.textFaint
            }
        }

        IconButton {
            id: pin

            anchors.right: track.left
            anchors.rightMargin: 9
            anchors.verticalCenter: parent.verticalCenter
            visible: project.row.isTracked
            activeFocusOnTab: row.ListView.isCurrentItem || activeFocus
            symbol: project.row.isPinned ? "pin.fill" : "pin"
            fontSize: 10
            ink: project.row.isPinned ? DS.live : DS.textDim
            hoverInk: project.row.isPinned ? DS.live : DS.textMuted
            reach: 4
            ring.strokeColor: DS.textMuted
            label: "Pin " + project.row.name
            toolTip: project.row.pinToolTip
            Accessible.role: Accessible.CheckBox
            Accessible.checkable: true
            Accessible.checked: project.row.isPinned
            onPressed: project.togglePinned()
        }

        MockupToggle {
            id: track

            anchors.right: parent.right
            anchors.rightMargin: 14
            anchors.verticalCenter: parent.verticalCenter
            activeFocusOnTab: row.ListView.isCurrentItem || activeFocus
            focus: true
            isOn: project.row.isTracked
            label: "Track " + project.row.name
            onPressed: project.toggleTracked()
        }
    }
}
