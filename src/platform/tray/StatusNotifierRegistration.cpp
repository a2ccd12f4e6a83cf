#include "platform/tray/StatusNotifierRegistration.h"

#include <QDBusError>
#include <QDBusVariant>
#include <QStringList>
#include <algorithm>
#include <utility>

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

constexpr int maximumAttempts = 6;

QString watcherName() {
    return u"org.kde.StatusNotifierWatcher"_s;
}

QDBusMessage watcherCall(const QString& interface, const QString& method) {
    QDBusMessage message =
        QDBusMessage::createMethodCall(watcherName(), u"/StatusNotifierWatcher"_s, interface, method);
    // A panel brings its own watcher; starting one for nobody would pretend that there is a panel.
    message.setAutoStartService(false);
    return message;
}

}  // namespace

StatusNotifierRegistration::StatusNotifierRegistration(QDBusConnection connection, QString service,
                                                       std::shared_ptr<StatusNotifierQueue> queue,
                                                       std::function<void(TrayHost)> onHost,
                                                       std::chrono::milliseconds patience)
    : m_connection(std::move(connection)),
      m_service(std::move(service)),
      m_queue(std::move(queue)),
      m_place(m_queue->takePlace()),
      m_onHost(std::move(onHost)),
      m_patience(patience),
      m_owner(watcherName(), m_connection, QDBusServiceWatcher::WatchForOwnerChange) {
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, [this] { m_step(); });
    connect(&m_owner, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString&, const QString&, const QString& newOwner) {
                m_timer.stop();
                m_pending.reset();
                if (!newOwner.isEmpty())
                    start();
            });
    start();
}

void StatusNotifierRegistration::start() {
    m_attempts = 0;
    if (!std::exchange(m_isQueued, true)) {
        m_queue->enqueue(*this, m_place, [this] {
            m_isQueued = false;
            identifyHost();
        });
    }
}

void StatusNotifierRegistration::identifyHost() {
    const QString bus = u"org.freedesktop.DBus"_s;
    QDBusMessage message =
        QDBusMessage::createMethodCall(bus, u"/org/freedesktop/DBus"_s, bus, u"GetConnectionUnixProcessID"_s);
    message << watcherName();
    call(message, &StatusNotifierRegistration::onProcess);
}

void StatusNotifierRegistration::onProcess(const QDBusMessage& reply) {
    // An error, too, is for the registration to find out about.
    m_onHost(trayHostOf(processName(reply.arguments().value(0).toUInt())));
    registerItem();
}

void StatusNotifierRegistration::registerItem() {
    ++m_attempts;
    QDBusMessage message = watcherCall(watcherName(), u"RegisterStatusNotifierItem"_s);
    message << m_service;
    call(message, &StatusNotifierRegistration::onRegistered);
}

void StatusNotifierRegistration::onRegistered(const QDBusMessage& reply) {
    if (reply.type() != QDBusMessage::ErrorMessage) {
        later(&StatusNotifierRegistration::checkList);
        return;
    }
    const QDBusError::ErrorType error = QDBusError(reply).type();
    const bool isNobodyThere = error == QDBusError::ServiceUnknown || error == QDBusError::Disconnected;
    if (isNobodyThere)
        m_queue->noteFailure();
    else if (m_attempts < maximumAttempts)
        later(&StatusNotifierRegistration::registerItem);
}

void StatusNotifierRegistration::checkList() {
    QDBusMessage message = watcherCall(u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
    message << watcherName() << u"RegisteredStatusNotifierItems"_s;
    call(message, &StatusNotifierRegistration::onList);
}

void StatusNotifierRegistration::onList(const QDBusMessage& reply) {
    // A watcher without the list gets the benefit of the doubt.
    if (reply.type() == QDBusMessage::ErrorMessage || reply.arguments().isEmpty())
        return;
    const QVariant list = reply.arguments().constFirst().value<QDBusVariant>().variant();
    if (!isListedIn(list.toStringList()) && m_attempts < maximumAttempts)
        registerItem();
}

void StatusNotifierRegistration::later(void (StatusNotifierRegistration::*step)()) {
    m_step = [this, step] { (this->*step)(); };
    m_timer.start(m_patience * (1 << (m_attempts - 1)));
}

void StatusNotifierRegistration::call(const QDBusMessage& message, Handler handler) {
    m_pending = std::make_unique<QDBusPendingCallWatcher>(m_connection.asyncCall(message));
    connect(m_pending.get(), &QDBusPendingCallWatcher::finished, this,
            [this, handler](QDBusPendingCallWatcher* finished) {
                m_pending.release()->deleteLater();
                (this->*handler)(finished->reply());
            });
}

bool StatusNotifierRegistration::isListedIn(const QStringList& items) const {
    // Watchers list the name that we gave, with or without the object path, or our unique name with it.
    return std::ranges::any_of(items, [this](const QString& item) {
        const QString name = item.section(u'/', 0, 0);
        return name == m_service || name == m_connection.baseService();
    });
}

}  // namespace tidemark
