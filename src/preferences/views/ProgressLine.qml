import QtQuick
import QtQuick.Templates as T
import Tidemark.Preferences

/// How much of something is done.
T.ProgressBar {
    id: bar

    implicitHeight: 6
    Accessible.name: "Progress"

    background: Rectangle {
        radius: 3
        color: Theme.divider
    }
    contentItem: Item {
        Rectangle {
            width: Math.round(bar.visualPosition * parent.width)
            height: parent.height
            radius: 3
            color: Theme.accentFill
        }
    }
}
