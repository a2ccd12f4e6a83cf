import QtQuick
import Tidemark.Controls

/// Shows at the end of a list, while it moves or the pointer is there, or always, which part of it is in sight,
/// and drags it.
Item {
    id: bar

    /// The part of the list that is in sight, and where it begins, both as parts of the list's height.
    required property real share
    required property real position
    required property bool isMoving
    required property color color
    property bool isAlwaysShown: false

    /// Dragged to the place where so much of what is out of sight lies above.
    signal moved(part: real)

    visible: share < 1
    Accessible.ignored: true

    Item {
        id: strip

        anchors.right: parent.right
        width: 10
        height: parent.height

        HoverHandler {
            id: hover
        }

        ContinuousRectangle {
            id: thumb

            x: 4
            y: bar.share < 1 ? (strip.height - height) * bar.position / (1 - bar.share) : 0
            width: 4
            height: Math.max(24, strip.height * bar.share)
            radius: 2
            color: bar.color
            opacity: bar.isAlwaysShown || bar.isMoving || hover.hovered || area.pressed ? 1 : 0

            Behavior on opacity {
                NumberAnimation {
                    duration: 150
                }
            }
        }

        MouseArea {
            id: area

            property real grip

            anchors.fill: parent
            preventStealing: true
            onPressed: mouse => {
                grip = mouse.y - thumb.y;
                // Beside the thumb the row below is meant.
                mouse.accepted = grip >= 0 && grip < thumb.height;
            }
            onPositionChanged: mouse => drag(mouse.y)

            function drag(y: real): void {
                bar.moved(Math.max(0, Math.min(1, (y - grip) / (strip.height - thumb.height))));
            }
        }
    }
}
