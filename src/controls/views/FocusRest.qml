import QtQuick

/// Initial focus: does nothing itself; Tab moves to the first control.
Item {
    focus: true
    Accessible.ignored: true
}
