#pragma once

#include <QByteArray>
#include <QtGlobal>

namespace tidemark {

/// How a tray treats items, where that requires different behaviour from us. We tell trays apart by the
/// process that owns StatusNotifierWatcher. Most panels start a watcher of their own; one that uses another
/// panel's watcher is treated as that panel.
enum class TrayHost : quint8 {
    /// Reports clicks to the item. Some of these trays, such as GNOME's, show no item without a menu.
    usual,
    /// Shows items without a menu, and reports right clicks to them as well. For a menu without entries it
    /// would open an empty box.
    menuOptional,
    /// The service behind the Ayatana indicators' applets, such as MATE's. It opens the menu on a left click
    /// and does not report the click. It loads icons by name only.
    indicators,
};

/// The kind of tray whose watcher runs in a process of this name (as in /proc/…/comm); empty when unknown.
[[nodiscard]] TrayHost trayHostOf(const QByteArray& processName);

/// The name of a running process; empty when there is none or it is not visible.
[[nodiscard]] QByteArray processName(uint processId);

}  // namespace tidemark
