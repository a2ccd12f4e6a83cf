import QtQuick
import Tidemark.Controls
import Tidemark.Popover

/// A symbol and what it stands for; there is none without a text.
Item {
    id: row

    required property string icon
    required property string label
    /// What the symbol means, for those who do not see it.
    required property string meaning

    visible: label !== ""
    implicitHeight: Math.max(symbol.implicitHeight, text.implicitHeight)
    Accessible.role: Accessible.StaticText
    Accessible.name: label === "" ? "" : meaning + ": " + label

    Symbol {
        id: symbol

        anchors.verticalCenter: parent.verticalCenter
        width: 12
        name: row.icon
        fontSize: 10
        color: DS.textDim
    }

    Label {
        id: text

        x: 17
        width: row.width - x
        anchors.verticalCenter: parent.verticalCenter
        text: row.label
        wrapMode: Text.Wrap
        maximumLineCount: 6
        color: DS.textMuted
    }
}
