#include "desktop/TrayHost.h"

#include <QFile>
#include <QString>

namespace tidemark {

TrayHost trayHostOf(const QByteArray& processName) {
    // The kernel cuts names at 15 bytes.
    return processName == "ayatana-indicat" ? TrayHost::indicators : TrayHost::usual;
}

QByteArray processName(uint processId) {
    QFile file(QStringLiteral("/proc/%1/comm").arg(processId));
    return file.open(QIODevice::ReadOnly) ? file.readAll().trimmed() : QByteArray();
}

}  // namespace tidemark
