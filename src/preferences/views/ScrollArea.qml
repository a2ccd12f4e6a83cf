import QtQuick
import Tidemark.Controls
import Tidemark.Preferences

/// A column that scrolls, and that keeps in sight what has the keyboard.
Flickable {
    id: area

    readonly property Item focusItem: Window.activeFocusItem

    contentWidth: width
    boundsBehavior: Flickable.StopAtBounds
    clip: true
    interactive: contentHeight > height
    onFocusItemChanged: settling.start()

    function scrollBy(distance: real): void {
        contentY = Math.max(0, Math.min(contentHeight - height, contentY + distance));
    }

    function reveal(): void {
        const item = focusItem;
        if (!item || !isWithin(item))
            return;
        const margin = 12;
        const top = item.mapToItem(contentItem, 0, 0).y - margin;
        const bottom = top + item.height + 2 * margin;
        if (top < contentY)
            contentY = Math.max(0, top);
        else if (bottom > contentY + height)
            contentY = Math.max(0, Math.min(contentHeight, bottom) - height);
    }

    function isWithin(item: Item): bool {
        return item !== null && (item === contentItem || isWithin(item.parent));
    }

    // What has just been made has no place yet.
    Timer {
        id: settling

        interval: 0
        onTriggered: area.reveal()
    }

    ScrollThumb {
        parent: area
        anchors.fill: parent
        share: area.contentHeight > 0 ? area.height / area.contentHeight : 1
        position: area.contentY / area.contentHeight
        isMoving: area.moving
        color: Theme.placeholder
        isAlwaysShown: true
        onMoved: part => area.contentY = part * (area.contentHeight - area.height)
    }
}
