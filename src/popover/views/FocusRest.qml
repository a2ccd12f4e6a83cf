import QtQuick

/// Where the keyboard waits at first: Tab leads to what follows, and no key acts on anything.
Item {
    focus: true
    Accessible.ignored: true
}
