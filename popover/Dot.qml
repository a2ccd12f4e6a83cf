import QtQuick

/// A filled circle.
Rectangle {
    required property real size

    implicitWidth: size
    implicitHeight: size
    radius: size / 2
    antialiasing: true
}
