#pragma once

#include <QFont>
#include <QGuiApplication>
#include <QMargins>
#include <QString>

#include "platform/windows/Menu.h"

/// Shared by the layout and the painting of MenuWindow.
namespace tidemark::menulook {

/// Between the window's edge and the rows.
inline constexpr int menuPadding = 5;
/// Between a row's edge and its text.
inline constexpr QMargins rowPadding(12, 5, 12, 5);
inline constexpr int shortcutGap = 32;

inline QFont fontOf(const MenuItem& item) {
    QFont font = QGuiApplication::font();
    font.setBold(item.isHeading);
    return font;
}

inline QString shortcutOf(const MenuItem& item) {
    return item.keyEquivalent.isNull() ? QString()
                                       : QStringLiteral("Ctrl+%1").arg(item.keyEquivalent.toUpper());
}

}  // namespace tidemark::menulook
