#include "platform/tray/StatusNotifierRegistration.h"

#include <QDBusError>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QStringList>
#include <QTimer>
#include <algorithm>
#include <utility>

#include "platform/base/BusCall.h"
#include "platform/base/StoppableWait.h"

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
    // A panel starts its watcher itself. A watcher that we start would pretend that there is a panel.
    message.setAutoStartService(false);
    return message;
}

QCoro::Task<> pause(std::chrono::milliseconds time, std::stop_token stop) {
    StoppableWait wait(std::move(stop));
    const QObject context;
    QTimer::singleShot(time, &context, [&wait] { wait.end(); });
    co_await wait.ended();
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
    connect(&m_owner, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString&, const QString&, const QString& newOwner) {
                m_run.requestStop();
                if (!newOwner.isEmpty())
                    start();
            });
    start();
}

void StatusNotifierRegistration::start() {
    if (!std::exchange(m_isQueued, true)) {
        m_queue->enqueue(*this, m_place, [this] {
            m_isQueued = false;
            m_run = m_tasks.start([this](std::stop_token stop) { return run(std::move(stop)); });
        });
    }
}

QCoro::Task<> StatusNotifierRegistration::run(std::stop_token stop) {
    const TrayHost host = co_await identifyHost(stop);
    if (stop.stop_requested())
        co_return;
    m_onHost(host);
    for (int attempt = 0; attempt < maximumAttempts; ++attempt) {
        const Outcome outcome = co_await registerItem(stop);
        if (stop.stop_requested())
            co_return;
        if (outcome == Outcome::nobodyThere) {
            m_queue->noteFailure();
            co_return;
        }
        co_await pause(m_patience * (1 << attempt), stop);
        if (stop.stop_requested())
            co_return;
        if (outcome == Outcome::accepted && co_await isListed(stop))
            co_return;
    }
}

QCoro::Task<TrayHost> StatusNotifierRegistration::identifyHost(std::stop_token stop) {
    const QDBusMessage getProcess = busCall(u"GetConnectionUnixProcessID"_s, {watcherName()});
    const QDBusMessage answer = co_await answerTo(getProcess, m_connection, std::move(stop));
    // An error counts as an unknown host. The registration that follows deals with it.
    co_return trayHostOf(processName(answer.arguments().value(0).toUInt()));
}

QCoro::Task<StatusNotifierRegistration::Outcome> StatusNotifierRegistration::registerItem(
    std::stop_token stop) {
    QDBusMessage message = watcherCall(watcherName(), u"RegisterStatusNotifierItem"_s);
    message << m_service;
    const QDBusMessage answer = co_await answerTo(message, m_connection, std::move(stop));
    if (answer.type() != QDBusMessage::ErrorMessage)
        co_return Outcome::accepted;
    const QDBusError::ErrorType error = QDBusError(answer).type();
    const bool isNobodyThere = error == QDBusError::ServiceUnknown || error == QDBusError::Disconnected;
    co_return isNobodyThere ? Outcome::nobodyThere : Outcome::refused;
}

QCoro::Task<bool> StatusNotifierRegistration::isListed(std::stop_token stop) {
    QDBusMessage message = watcherCall(u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
    message << watcherName() << u"RegisteredStatusNotifierItems"_s;
    const QDBusMessage answer = co_await answerTo(message, m_connection, std::move(stop));
    if (answer.type() == QDBusMessage::ErrorMessage || answer.arguments().isEmpty())
        co_return true;
    const QVariant list = answer.arguments().constFirst().value<QDBusVariant>().variant();
    co_return isListedIn(list.toStringList());
}

bool StatusNotifierRegistration::isListedIn(const QStringList& items) const {
    // Watchers list the name that we gave, with or without the object path, or our unique name with it.
    return std::ranges::any_of(items, [this](const QString& item) {
        const QString name = item.section(u'/', 0, 0);
        return name == m_service || name == m_connection.baseService();
    });
}

}  // namespace tidemark
