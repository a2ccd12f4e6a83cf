import QtQuick

/// Room for one view that exists only while it is wanted. (A Loader cannot make components that are bound to
/// their context.)
Item {
    id: slot

    default property alias delegate: repeater.delegate
    property bool active: false
    /// The view; null while there is none.
    property Item item: null

    implicitHeight: childrenRect.height

    Repeater {
        id: repeater

        model: slot.active ? 1 : 0
        onItemAdded: (index, item) => slot.item = item
        onItemRemoved: slot.item = null
    }
}
