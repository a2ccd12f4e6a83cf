#include "platform/tray/DBusStatusBar.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <utility>

#include "platform/tray/DBusStatusItem.h"

namespace tidemark {

using namespace Qt::StringLiterals;

DBusStatusBar::DBusStatusBar(QString applicationName) : m_applicationName(std::move(applicationName)) {}

std::unique_ptr<StatusItem> DBusStatusBar::createStatusItem(const QString& id) {
    const QString service =
        u"org.kde.StatusNotifierItem-%1-%2"_s.arg(QCoreApplication::applicationPid()).arg(++m_itemCount);
    const QDBusConnection connection = QDBusConnection::connectToBus(QDBusConnection::SessionBus, service);
    if (!connection.isConnected()) {
        QDBusConnection::disconnectFromBus(service);
        return nullptr;
    }
    return std::make_unique<DBusStatusItem>(connection, service, m_registrations, m_applicationName, id);
}

}  // namespace tidemark
