#include "platform/keyring/SecretServiceWatcher.h"

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QVariantMap>
#include <utility>

#include "platform/base/BusCall.h"

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
    // From any sender, because Qt would block to ask the bus who owns a name given here.
    m_bus.connect({}, {}, busProperties, u"PropertiesChanged"_s, {secretCollection}, {}, this,
                  SLOT(onPropertiesChanged(QDBusMessage)));
    // On an unlock, some services send the first of these and some the second.
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
    const QString collection = signal.arguments().value(0).value<QDBusObjectPath>().path();
    m_tasks.start([this, service = signal.service(), collection](std::stop_token stop) {
        return reportIfUnlocked(service, collection, std::move(stop));
    });
}

QCoro::Task<> SecretServiceWatcher::reportIfUnlocked(QString service, QString collection,
                                                     std::stop_token stop) {
    // The signal comes for a collection that was locked, too. Reading that one would ask the user to unlock
    // it.
    QDBusMessage get = QDBusMessage::createMethodCall(service, collection, busProperties, u"Get"_s);
    get << secretCollection << lockedProperty;
    const QDBusMessage answer = co_await answerTo(get, m_bus, std::move(stop));
    const QVariant isLocked = answer.arguments().value(0).value<QDBusVariant>().variant();
    // Queued, because a slot may destroy this object, which must not happen inside its own task.
    if (answer.type() == QDBusMessage::ReplyMessage && isLocked.isValid() && !isLocked.toBool())
        QMetaObject::invokeMethod(this, &KeychainWatcher::mayBeReadable, Qt::QueuedConnection);
}

}  // namespace tidemark
