#include "platform/session/SingleInstance.h"

#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
#include <QVariantMap>
#include <utility>

#include "platform/base/BusCall.h"
#include "platform/session/ApplicationService.h"

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

/// In milliseconds, for each call. The calls block the thread on purpose: until it is known whether this
/// process is the first one, there is nothing else to do and nothing on the screen that could freeze.
constexpr int answerTimeout = 2000;

enum class Answer : quint8 { done, nobodyThere, silent };

QString connectionName() {
    return u"tidemark-instance"_s;
}

/// "/com/example/App" for "com.example.App". Object paths cannot contain hyphens.
QString objectPath(QString identifier) {
    return u'/' + identifier.replace(u'.', u'/').replace(u'-', u'_');
}

QString startupToken() {
    const QString token = qEnvironmentVariable("XDG_ACTIVATION_TOKEN");
    return token.isEmpty() ? qEnvironmentVariable("DESKTOP_STARTUP_ID") : token;
}

Answer activateOwner(const QDBusConnection& connection, const QString& name, const QString& token) {
    QDBusMessage activate = QDBusMessage::createMethodCall(name, objectPath(name),
                                                           u"org.freedesktop.Application"_s, u"Activate"_s);
    QVariantMap platformData;
    if (!token.isEmpty()) {
        platformData.insert(u"activation-token"_s, token);
        platformData.insert(u"desktop-startup-id"_s, token);
    }
    activate << platformData;
    activate.setAutoStartService(false);
    const QDBusMessage reply = connection.call(activate, QDBus::Block, answerTimeout);
    if (reply.type() == QDBusMessage::ReplyMessage)
        return Answer::done;
    return QDBusError(reply).type() == QDBusError::ServiceUnknown ? Answer::nobodyThere : Answer::silent;
}

}  // namespace

SingleInstance::SingleInstance(QString identifier)
    : m_identifier(std::move(identifier)), m_startupToken(startupToken()) {}

SingleInstance::~SingleInstance() {
    release();
}

SingleInstance::Role SingleInstance::claim() {
    const Role role = negotiate();
    if (role != Role::first)
        release();
    return role;
}

SingleInstance::Role SingleInstance::negotiate() {
    QDBusConnection connection = QDBusConnection::connectToBus(QDBusConnection::SessionBus, connectionName());
    if (!connection.isConnected())
        return Role::standalone;
    // Exported before the name is requested, so that a call that follows the name finds the object.
    m_service = std::make_unique<ApplicationService>();
    connect(m_service.get(), &ApplicationService::activated, this, &SingleInstance::activated);
    connection.registerObject(objectPath(m_identifier), m_service.get(), QDBusConnection::ExportAllSlots);

    // The owner may quit between the two calls. The next request then gets the name.
    constexpr int rounds = 5;
    for (int round = 0; round < rounds; ++round) {
        const QDBusMessage reply = connection.call(nameRequest(m_identifier), QDBus::Block, answerTimeout);
        if (reply.type() != QDBusMessage::ReplyMessage)
            return Role::standalone;
        constexpr uint primaryOwner = 1;
        if (reply.arguments().constFirst().toUInt() == primaryOwner)
            return Role::first;
        if (activateOwner(connection, m_identifier, m_startupToken) != Answer::nobodyThere)
            return Role::second;
    }
    return Role::second;
}

void SingleInstance::release() {
    m_service.reset();
    QDBusConnection::disconnectFromBus(connectionName());
}

}  // namespace tidemark
