import QtQuick
import Tidemark.Preferences

/// A line across.
Rectangle {
    implicitHeight: 1
    color: Theme.divider
}
