import QtQuick
import Tidemark.Preferences

/// The title of a section.
BodyText {
    font.bold: true
    Accessible.role: Accessible.Heading
}
