import QtQuick

/// Room for one view that exists only while it is wanted. (A Loader cannot make components that are bound to
/// their context.)
Item {
    id: slot

    property alias delegate: repeater.delegate
    property bool active: false
    /// How far the view is moved down, or up where it is negative.
    property real shift: 0
    /// The view; null while there is none.
    property Item item: null

    implicitHeight: room.childrenRect.height

    Item {
        id: room

        y: slot.shift
        width: slot.width

        Repeater {
            id: repeater

            model: slot.active ? 1 : 0
            onItemAdded: (index, item) => slot.item = item
            onItemRemoved: slot.item = null
        }
    }
}
