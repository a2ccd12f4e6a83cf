#include "tests/platform/session/FakeNotificationService.h"

#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusError>
#include <QDBusMessage>
#include <utility>

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

const QString notificationService = u"org.freedesktop.Notifications"_s;
const QString notificationPath = u"/org/freedesktop/Notifications"_s;

QDBusConnection freshConnection() {
    static int count = 0;
    return QDBusConnection::connectToBus(QDBusConnection::SessionBus,
                                         u"notification-service-%1"_s.arg(++count));
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
    if (message.member() == u"Notify"_s)
        for (const auto& [name, arguments] : std::exchange(early, {}))
            emitSignal(name, arguments);
    connection.send(answer);
    return true;
}

QDBusMessage FakeNotificationService::answerTo(const QDBusMessage& message) {
    if (message.member() == u"GetCapabilities"_s)
        return capabilities.isValid() ? message.createReply(capabilities)
                                      : message.createErrorReply(QDBusError::UnknownMethod, QString());
    const QString expectedSignature = u"susssasa{sv}i"_s;
    if (message.member() != u"Notify"_s || message.signature() != expectedSignature)
        return message.createErrorReply(QDBusError::UnknownMethod, message.member());
    QVariantList& arguments = notifications.emplace_back(message.arguments());
    arguments[6] = qdbus_cast<QVariantMap>(arguments.at(6));
    return message.createReply(nextId++);
}

}  // namespace tidemark
