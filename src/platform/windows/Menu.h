#pragma once

#include <QList>
#include <QString>
#include <functional>

namespace tidemark {

/// One entry of a menu.
struct MenuItem {
    /// Distinct within its menu. An entry with the same identifier is the same entry in a later menu of the
    /// same status item, so that an open menu changes its text in place.
    QString identifier;
    /// As it reads: nothing in it is a mnemonic or markup.
    QString title;
    bool isSeparator = false;
    /// The heading of the menu, bold where the menu can show it.
    bool isHeading = false;
    /// The letter that is shown with Control as the entry's shortcut; null for none.
    QChar keyEquivalent;
    /// Runs when the entry is chosen. An entry without one is disabled.
    std::function<void()> action;
    /// Gives the title anew whenever the menu is about to be shown, for a text that ages. Empty for one that
    /// does not.
    std::function<QString()> currentTitle;

    [[nodiscard]] bool isEnabled() const { return static_cast<bool>(action); }
    /// The title for somebody who reads it now.
    [[nodiscard]] QString titleNow() const { return currentTitle ? currentTitle() : title; }
};
using Menu = QList<MenuItem>;

}  // namespace tidemark
