import QtQuick
import Tidemark.Preferences

/// A text that explains what stands above it.
BodyText {
    color: Theme.secondary
    font.pixelSize: Theme.captionSize
}
