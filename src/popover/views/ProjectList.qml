import QtQuick
import Tidemark.Controls
import Tidemark.Popover

/// A list of projects that is as high as its content, up to a limit, and that the arrow keys go through. Its
/// delegates have a function takeFocus().
ListView {
    id: list

    required property real maximumHeight

    readonly property real fullHeight: contentHeight + topMargin + bottomMargin
    /// Where the keyboard is, when the user moves about with it.
    readonly property Item keyboardItem: Navigation.byKeyboard ? Window.activeFocusItem : null

    implicitHeight: Math.max(0, Math.min(maximumHeight, fullHeight))
    clip: true
    reuseItems: true
    cacheBuffer: 0
    boundsBehavior: Flickable.StopAtBounds
    interactive: fullHeight > height
    keyNavigationEnabled: false
    highlightFollowsCurrentItem: false
    currentIndex: 0
    Accessible.role: Accessible.List
    onKeyboardItemChanged: {
        if (keyboardItem)
            revealRowOf(keyboardItem);
    }

    function revealRowOf(item: Item): void {
        const row = item as ProjectListRow;
        if (row && row.list === list)
            reveal(row.index);
        else if (item.parent)
            revealRowOf(item.parent);
    }

    Keys.onPressed: event => {
        const page = Math.max(1, Math.floor(height / 50));
        switch (event.key) {
        case Qt.Key_Up:
            // From the first row the keyboard goes on to what stands above.
            event.accepted = currentIndex > 0;
            if (event.accepted)
                focusRow(currentIndex - 1);
            break;
        case Qt.Key_Down:
            event.accepted = true;
            focusRow(currentIndex + 1);
            break;
        case Qt.Key_Home:
            event.accepted = true;
            focusRow(0);
            break;
        case Qt.Key_End:
            event.accepted = true;
            focusRow(count - 1);
            break;
        case Qt.Key_PageUp:
            event.accepted = true;
            focusRow(currentIndex - page);
            break;
        case Qt.Key_PageDown:
            event.accepted = true;
            focusRow(currentIndex + page);
            break;
        }
    }

    /// Gives the keyboard to a row, or to the one next to it that there is.
    function focusRow(row: int): void {
        if (!visible)
            return;
        currentIndex = Math.max(0, Math.min(count - 1, row));
        positionViewAtIndex(currentIndex, ListView.Contain);
        forceLayout();
        const item = currentItem as ProjectListRow;
        if (item)
            item.takeFocus();
    }

    /// Keeps a row in sight that has changed its height.
    function reveal(row: int): void {
        positionViewAtIndex(row, ListView.Contain);
    }

    function choose(row: int): void {
        currentIndex = row;
    }

    /// Back to how it looked at first.
    function reset(): void {
        currentIndex = 0;
        forceLayout();
        // The view's own function leaves out the margin.
        contentY = originY - topMargin;
    }

    ScrollThumb {
        parent: list
        anchors.fill: parent
        share: list.fullHeight > 0 ? list.height / list.fullHeight : 1
        position: (list.contentY - list.originY + list.topMargin) / list.fullHeight
        isMoving: list.moving
        color: DS.textFaint
        onMoved: part => list.contentY = list.originY - list.topMargin + part * (list.fullHeight - list.height)
    }
}
