#include "platform/keyring/SecretServiceWatcher.h"

#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QVariantMap>
#include <utility>

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

const QString secretService = u"org.freedesktop.secrets"_s;
const QString secretCollection = u"org.freedesktop.Secret.Collection"_s;
const QString busProperties = u"org.freedesktop.DBus.Properties"_s;
const QString lockedProperty = u"Locked"_s;

}  // namespace

SecretServiceWatcher::SecretServiceWatcher(QDBusConnection bus)
    : m_bus(std::move(bus)), m_owner(secretService, m_bus, QDBusServiceWatcher::WatchForRegistration) {
    connect(&m_owner, &QDBusServiceWatcher::serviceRegistered, this, &KeychainWatcher::mayBeReadable);
    // From any sender: with a service's name given here, Qt waits for the bus to say who that is.
    m_bus.connect({}, {}, busProperties, u"PropertiesChanged"_s, {secretCollection}, {}, this,
                  SLOT(onPropertiesChanged(QDBusMessage)));
    // Services differ in which of these they send when a collection is unlocked.
    for (const QString& signal : {u"CollectionChanged"_s, u"CollectionCreated"_s}) {
        m_bus.connect({}, u"/org/freedesktop/secrets"_s, u"org.freedesktop.Secret.Service"_s, signal, this,
                      SLOT(onCollection(QDBusMessage)));
    }
}

void SecretServiceWatcher::onPropertiesChanged(const QDBusMessage& signal) {
    const auto changed = qdbus_cast<QVariantMap>(signal.arguments().value(1));
    const QVariant isLocked = changed.value(lockedProperty);
    if (isLocked.userType() == QMetaType::Bool && !isLocked.toBool())
        Q_EMIT mayBeReadable();
}

void SecretServiceWatcher::onCollection(const QDBusMessage& signal) {
    // What was locked just now must not bring up the question to unlock it.
    const auto collection = signal.arguments().value(0).value<QDBusObjectPath>();
    QDBusMessage get =
        QDBusMessage::createMethodCall(signal.service(), collection.path(), busProperties, u"Get"_s);
    get << secretCollection << lockedProperty;
    auto* answer = new QDBusPendingCallWatcher(m_bus.asyncCall(get), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
        answer->deleteLater();
        const QDBusPendingReply<QDBusVariant> isLocked = *answer;
        if (isLocked.isValid() && !isLocked.value().variant().toBool())
            Q_EMIT mayBeReadable();
    });
}

}  // namespace tidemark
