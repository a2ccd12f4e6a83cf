import QtQuick
import Tidemark.Controls
import Tidemark.Preferences

/// The focus ring in the desktop's accent colour.
FocusRing {
    reach: 2
    strokeWidth: 2
    strokeColor: Theme.accentFill
}
