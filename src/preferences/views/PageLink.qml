import QtQuick
import Tidemark.Preferences

/// A caption that leads to a page in the browser.
PlainButton {
    symbol: "arrow.up.right.square"
    gap: 4
    ink: Theme.accent
    fontSize: Theme.captionSize
    Accessible.role: Accessible.Link
}
