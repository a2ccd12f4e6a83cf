pragma ComponentBehavior: Bound

import QtQuick
import Tidemark.Controls
import Tidemark.Popover

/// A row of a list: a line, whose parts are its children, and the details into which it expands.
ProjectListRow {
    id: row

    required property string rowId
    required property bool isExpanded
    /// Of the line.
    required property real headHeight
    /// The details, which are made when the row expands.
    property alias details: slot.delegate
    default property alias parts: line.data

    /// How much of the details is in sight.
    property real reveal: isExpanded ? 1 : 0
    /// Only what the user does is animated, not the row's use for something else.
    property bool isAnimated: false

    implicitHeight: headHeight + slot.height + 1

    /// To be called when the user expands or folds the row.
    function beginToggle(): void {
        isAnimated = true;
        list.choose(index);
    }

    ListView.onPooled: isAnimated = false
    onRevealChanged: {
        if (reveal === 0 || reveal === 1)
            isAnimated = false;
    }
    onHeightChanged: {
        if (isAnimated && isExpanded && list)
            list.reveal(index);
    }

    Behavior on reveal {
        enabled: row.isAnimated

        NumberAnimation {
            duration: 180
            easing.type: Easing.InOutQuad
        }
    }

    // Before the details, for the keyboard.
    Item {
        id: line

        width: row.width
        height: row.headHeight
    }

    Slot {
        id: slot

        y: row.headHeight
        width: row.width
        height: implicitHeight * row.reveal
        active: row.reveal > 0
        clip: row.reveal < 1
        opacity: row.reveal
        shift: (row.reveal - 1) * implicitHeight
    }

    Divider {
        color: DS.borderSoft
        anchors.bottom: parent.bottom
        width: row.width
        opacity: 0.3
    }
}
