import QtQuick
import Tidemark.Popover

/// A row of a project list. The list gives the focus to the row that is current, which hands it on.
FocusScope {
    id: row

    /// Where the row stands.
    required property ProjectList list
    required property int index

    // One that waits for its next use is still drawn out of sight: it must not be found by Tab or by tools.
    ListView.onPooled: visible = false
    ListView.onReused: visible = true

    /// Gives the keyboard to what the row is about.
    function takeFocus(): void {}
}
