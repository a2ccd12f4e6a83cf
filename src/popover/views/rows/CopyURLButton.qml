import QtQuick
import Tidemark.Controls
import Tidemark.Popover

/// Copies the address of a project's site.
Item {
    id: button

    required property ProjectRowModel project
    readonly property bool canCopy: project && project.canCopy
    readonly property bool isCopied: project && project.isCopied

    implicitWidth: 24
    implicitHeight: 20

    HoverTip {
        id: tip

        text: button.project ? button.project.copyToolTip : ""
    }

    Chip {
        anchors.fill: parent
        enabled: button.canCopy
        label: "Copy URL"
        Accessible.description: tip.text
        onPressed: button.project.copyUrl()

        Symbol {
            anchors.centerIn: parent
            name: button.isCopied ? "checkmark" : "doc.on.doc"
            fontSize: 10
            color: button.isCopied ? DS.live : DS.textMuted
            opacity: button.canCopy ? 1 : 0.4

            Behavior on color {
                ColorAnimation {
                    duration: 200
                }
            }
        }
    }
}
