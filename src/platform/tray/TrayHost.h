#pragma once

#include <QByteArray>
#include <QtGlobal>

namespace tidemark {

/// What a tray makes of items, as far as an item has to be different for it. Judged by the watcher, which a
/// panel brings along most of the time; one that uses somebody else's is taken for that one.
enum class TrayHost : quint8 {
    /// Tells an item of clicks. Some of these, such as GNOME's, show no item that has no menu.
    usual,
    /// Shows items without a menu, and tells those of a right click as well. Of an empty menu it would open a
    /// box with nothing in it.
    menuOptional,
    /// The service behind the Ayatana indicators' applets, such as MATE's. It opens the menu on a left click
    /// and tells nobody; icons it finds by their names only.
    indicators,
};

/// The kind of tray that the process of this name (as in /proc/…/comm) brings along. Empty for one that could
/// not be found out.
[[nodiscard]] TrayHost trayHostOf(const QByteArray& processName);

/// The name of a running process; empty when there is none or when it is out of sight.
[[nodiscard]] QByteArray processName(uint processId);

}  // namespace tidemark
