import QtQuick

/// A line across.
Rectangle {
    implicitHeight: 1
}
