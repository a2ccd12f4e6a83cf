import QtQuick
import Tidemark.Preferences

/// What a field of a card is for, in its fixed column.
Explanation {
    wrapMode: Text.NoWrap
    maximumLineCount: 1
    fontSizeMode: Text.HorizontalFit
    minimumPixelSize: 7
}
