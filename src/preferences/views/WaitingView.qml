import QtQuick
import Tidemark.Controls
import Tidemark.Preferences

/// Stands in the window while the keyring waits for its user.
Item {
    id: view

    Shortcut {
        sequences: ["Escape", "Ctrl+W"]
        onActivated: view.Window.window.close()
    }

    Row {
        anchors.centerIn: parent
        spacing: 10

        Spinner {
            width: 16
            height: 16
            color: Theme.secondary
        }

        BodyText {
            text: "Waiting for the keyring…"
            color: Theme.secondary
        }
    }
}
