import QtQuick
import Tidemark.Popover

/// Copies the address of a project's site.
Item {
    id: button

    required property ProjectRowModel project

    implicitWidth: 24
    implicitHeight: 20

    HoverTip {
        text: button.project.copyToolTip
    }

    Pressable {
        anchors.fill: parent
        enabled: button.project.canCopy
        label: "Copy URL"
        Accessible.description: button.project.copyToolTip
        onPressed: button.project.copyUrl()

        ContinuousRectangle {
            anchors.fill: parent
            radius: 4
            color: DS.border
            opacity: 0.6
        }

        Symbol {
            anchors.centerIn: parent
            name: button.project.isCopied ? "checkmark" : "doc.on.doc"
            fontSize: 10
            color: button.project.isCopied ? DS.live : DS.textMuted
            opacity: button.project.canCopy ? 1 : 0.4

            Behavior on color {
                ColorAnimation {
                    duration: 200
                }
            }
        }
    }
}
