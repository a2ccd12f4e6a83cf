import QtQuick

/// Text as it is: whatever came from a service is never read as markup.
Text {
    textFormat: Text.PlainText
    horizontalAlignment: Text.AlignLeft
}
