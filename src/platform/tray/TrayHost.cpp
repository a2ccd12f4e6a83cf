#include "platform/tray/TrayHost.h"

#include <QByteArrayView>
#include <QFile>
#include <QString>
#include <algorithm>
#include <array>

namespace tidemark {

using namespace Qt::StringLiterals;

TrayHost trayHostOf(const QByteArray& processName) {
    // The kernel cuts names at 15 bytes.
    if (processName == "ayatana-indicat")
        return TrayHost::indicators;
    constexpr std::array<QByteArrayView, 6> menuOptional{
        "kded5", "kded6", "lxqt-panel", "notification-ar" /* MATE's */, "xapp-sn-watcher", "waybar"};
    return std::ranges::find(menuOptional, processName) != menuOptional.end() ? TrayHost::menuOptional
                                                                              : TrayHost::usual;
}

QByteArray processName(uint processId) {
    QFile file(u"/proc/%1/comm"_s.arg(processId));
    return file.open(QIODevice::ReadOnly) ? file.readAll().trimmed() : QByteArray();
}

}  // namespace tidemark
