import Tidemark.Controls
import Tidemark.Preferences

/// A text that can be pressed.
TextButton {
    ink: Theme.secondary
    fontSize: Theme.bodySize
    isUnderlinedByHover: true
    ring.reach: 3
    ring.radius: 4
    ring.strokeWidth: 2
    ring.strokeColor: Theme.accentFill
}
