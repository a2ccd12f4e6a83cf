#include "FakeNotificationService.h"

#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusError>
#include <QDBusMessage>
#include <utility>

namespace tidemark {
namespace {

const QString notificationService = QStringLiteral("org.freedesktop.Notifications");
const QString notificationPath = QStringLiteral("/org/freedesktop/Notifications");

QDBusConnection freshConnection() {
    static int count = 0;
    return QDBusConnection::connectToBus(QDBusConnection::SessionBus,
                                         QStringLiteral("notification-service-%1").arg(++count));
}

}  // namespace

FakeNotificationService::FakeNotificationService() : m_connection(freshConnection()) {
    m_connection.registerVirtualObject(notificationPath, this);
}

FakeNotificationService::~FakeNotificationService() {
    m_connection.unregisterObject(notificationPath);
    QDBusConnection::disconnectFromBus(m_connection.name());
}

void FakeNotificationService::appear() {
    m_connection.interface()->registerService(notificationService,
                                              QDBusConnectionInterface::ReplaceExistingService,
                                              QDBusConnectionInterface::AllowReplacement);
}

void FakeNotificationService::emitSignal(const QString& name, const QVariantList& arguments) const {
    QDBusMessage signal = QDBusMessage::createSignal(notificationPath, notificationService, name);
    signal.setArguments(arguments);
    m_connection.send(signal);
}

QString FakeNotificationService::introspect(const QString& /*path*/) const {
    return {};
}

bool FakeNotificationService::handleMessage(const QDBusMessage& message, const QDBusConnection& connection) {
    ++callCount;
    if (isSilent)
        return true;
    const QDBusMessage answer = answerTo(message);
    if (message.member() == QStringLiteral("Notify")) {
        for (const auto& [name, arguments] : std::exchange(early, {}))
            emitSignal(name, arguments);
    }
    connection.send(answer);
    return true;
}

QDBusMessage FakeNotificationService::answerTo(const QDBusMessage& message) {
    if (message.member() == QStringLiteral("GetCapabilities"))
        return capabilities.isValid() ? message.createReply(capabilities)
                                      : message.createErrorReply(QDBusError::UnknownMethod, QString());
    const QString expectedSignature = QStringLiteral("susssasa{sv}i");
    if (message.member() != QStringLiteral("Notify") || message.signature() != expectedSignature)
        return message.createErrorReply(QDBusError::UnknownMethod, message.member());
    QVariantList& arguments = notifications.emplace_back(message.arguments());
    arguments[6] = qdbus_cast<QVariantMap>(arguments.at(6));
    return message.createReply(nextId++);
}

}  // namespace tidemark
