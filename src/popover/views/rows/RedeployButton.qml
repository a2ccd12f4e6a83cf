import QtQuick
import Tidemark.Controls
import Tidemark.Popover

/// Deploys a project's newest commit once more.
Item {
    id: button

    required property ProjectRowModel project
    readonly property bool isBusy: project && project.isRedeploying

    implicitWidth: content.implicitWidth + 16
    implicitHeight: text.implicitHeight + 6

    HoverTip {
        id: hover

        text: "Redeploy without pushing a new commit"
    }

    Pressable {
        anchors.fill: parent
        label: text.text
        Accessible.description: hover.text
        // Busy it does nothing, but keeps the keyboard's place.
        onPressed: {
            if (!button.isBusy)
                button.project.redeploy();
        }

        ContinuousRectangle {
            anchors.fill: parent
            radius: 4
            color: DS.border
            opacity: 0.6
        }

        Item {
            id: content

            anchors.centerIn: parent
            implicitWidth: text.x + text.implicitWidth
            width: implicitWidth
            height: text.implicitHeight

            Symbol {
                anchors.verticalCenter: parent.verticalCenter
                visible: !button.isBusy
                name: "arrow.clockwise"
                fontSize: 9
                color: text.color
            }

            Spinner {
                anchors.verticalCenter: parent.verticalCenter
                visible: button.isBusy
                width: 10
                height: 10
                color: DS.textMuted
            }

            Label {
                id: text

                x: 14
                text: button.isBusy ? "Deploying…" : "Redeploy"
                color: button.isBusy ? DS.textFaint : DS.textMuted
            }
        }
    }
}
