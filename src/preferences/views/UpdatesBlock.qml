import QtQuick
import Tidemark.Preferences

/// Checks for updates: by themselves, or now. A build that is not configured for them says so.
Column {
    id: block

    required property UpdatesSection updates

    readonly property bool isConfigured: updates ? updates.isConfigured : false

    spacing: 8

    Explanation {
        width: parent.width
        visible: !block.isConfigured
        text: block.updates ? block.updates.notConfiguredText : ""
    }

    CheckOption {
        visible: block.isConfigured
        title: "Check for updates automatically"
        mnemonic: "U"
        isOn: block.updates ? block.updates.automatic : false
        onPressed: block.updates.automatic = !isOn
    }

    Row {
        spacing: 10
        visible: block.isConfigured

        PushButton {
            id: check

            title: "Check Now"
            mnemonic: "N"
            enabled: block.updates ? block.updates.canCheckNow : false
            onPressed: block.updates.checkNow()
        }

        Explanation {
            anchors.verticalCenter: check.verticalCenter
            width: Math.min(implicitWidth, block.width - check.width - 10)
            text: block.updates ? block.updates.status : ""
        }
    }
}
