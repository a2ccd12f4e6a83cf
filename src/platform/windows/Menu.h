#pragma once

#include <QList>
#include <QString>
#include <functional>

namespace tidemark {

/// One entry of a menu.
struct MenuItem {
    /// Unique within its menu. When a status item gets a new menu, an entry with the same identifier is the
    /// same entry, so its text changes in place while the menu is open.
    QString identifier;
    /// Plain text, without mnemonics or markup.
    QString title;
    bool isSeparator = false;
    /// The heading of the menu, in bold where the panel supports that.
    bool isHeading = false;
    /// The letter of a shortcut with Control; null for none.
    QChar keyEquivalent;
    /// Runs when the entry is chosen. An entry without one is disabled.
    std::function<void()> action;
    /// For a title that contains an age: gives the current title whenever the menu is about to be shown.
    /// Empty for other titles.
    std::function<QString()> currentTitle;

    [[nodiscard]] bool isEnabled() const { return static_cast<bool>(action); }
    /// The title as of now.
    [[nodiscard]] QString titleNow() const { return currentTitle ? currentTitle() : title; }
};
using Menu = QList<MenuItem>;

}  // namespace tidemark
