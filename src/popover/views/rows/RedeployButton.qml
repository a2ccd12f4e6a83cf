import QtQuick
import Tidemark.Controls
import Tidemark.Popover

/// Deploys a project's newest commit once more.
Chip {
    id: button

    required property ProjectRowModel project
    readonly property bool isBusy: project && project.isRedeploying

    label: isBusy ? "Deploying…" : "Redeploy"
    implicitWidth: content.implicitWidth + 16
    implicitHeight: content.implicitHeight + 6
    toolTip: "Redeploy without pushing a new commit"
    // Busy it does nothing, but keeps the keyboard's place.
    onPressed: {
        if (!isBusy)
            project.redeploy();
    }

    Row {
        id: content

        anchors.centerIn: parent
        opacity: button.contentOpacity

        Item {
            anchors.verticalCenter: parent.verticalCenter
            width: 14
            height: 10

            Symbol {
                anchors.verticalCenter: parent.verticalCenter
                visible: !button.isBusy
                name: "arrow.clockwise"
                fontSize: 9
                color: text.color
            }

            Spinner {
                visible: button.isBusy
                width: 10
                height: 10
                color: DS.textMuted
            }
        }

        Label {
            id: text

            text: button.label
            color: button.isBusy ? DS.textFaint : DS.textMuted
        }
    }
}
