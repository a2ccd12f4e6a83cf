#include "desktop/DBusStatusItem.h"

#include <QDBusMessage>
#include <utility>

namespace tidemark {
namespace {

QString itemPath() {
    return QStringLiteral("/StatusNotifierItem");
}

QString menuPath() {
    return QStringLiteral("/MenuBar");
}

/// Not QDBusConnection::registerService(), which waits for the answer. The bus handles our messages in
/// order, so the name is ours before the watcher hears of it.
void requestName(const QDBusConnection& connection, const QString& name) {
    constexpr uint doNotQueue = 4;
    QDBusMessage request = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("RequestName"));
    request << name << doNotQueue;
    connection.send(request);
}

}  // namespace

DBusStatusItem::DBusStatusItem(QDBusConnection connection, const QString& service,
                               const QString& applicationName, const QString& id)
    : m_connection(std::move(connection)), m_item(applicationName, id, menuPath()) {
    constexpr auto exported = QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllProperties |
                              QDBusConnection::ExportAllSignals;
    m_connection.registerObject(menuPath(), &m_menu, exported);
    m_connection.registerObject(itemPath(), &m_item, exported);
    requestName(m_connection, service);
    m_registration = std::make_unique<StatusNotifierRegistration>(m_connection, service);
}

DBusStatusItem::~DBusStatusItem() {
    m_registration.reset();
    m_connection.unregisterObject(itemPath());
    m_connection.unregisterObject(menuPath());
    QDBusConnection::disconnectFromBus(m_connection.name());
}

}  // namespace tidemark
