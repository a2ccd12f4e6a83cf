import Tidemark.Controls
import Tidemark.Popover

/// A text that can be pressed.
TextButton {
    fontSize: 11
    ink: DS.textFaint
    hoverInk: "#888888"
    reach: 4
    ring.strokeColor: DS.textMuted
}
