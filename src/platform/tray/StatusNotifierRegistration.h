#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QString>
#include <QTimer>
#include <chrono>
#include <functional>
#include <memory>

#include "platform/tray/StatusNotifierQueue.h"
#include "platform/tray/TrayHost.h"

namespace tidemark {

/// Keeps an item registered with the panel's StatusNotifierWatcher: now, when a watcher comes later, and
/// again whenever another one takes over. It does not ask whether a host is registered, because some
/// watchers answer that wrongly. Every call is asynchronous; when all is well no timer runs.
class StatusNotifierRegistration final : public QObject {
    Q_OBJECT

public:
    /// `service` is the item's own name on `connection`; `queue` is that of all items. `patience` is the time
    /// after which a registration is looked up in the watcher's list (GNOME's now and then drops an item
    /// while it loads), and after which a failed one is tried again; it doubles with each of the few
    /// attempts.
    ///
    /// `onHost` is told of the tray that a watcher belongs to before the item is registered with it.
    StatusNotifierRegistration(QDBusConnection connection, QString service,
                               std::shared_ptr<StatusNotifierQueue> queue,
                               std::function<void(TrayHost)> onHost,
                               std::chrono::milliseconds patience = std::chrono::seconds(2));

private:
    using Handler = void (StatusNotifierRegistration::*)(const QDBusMessage& reply);

    void start();
    void identifyHost();
    void onProcess(const QDBusMessage& reply);
    void registerItem();
    void onRegistered(const QDBusMessage& reply);
    void checkList();
    void onList(const QDBusMessage& reply);
    void later(void (StatusNotifierRegistration::*step)());
    void call(const QDBusMessage& message, Handler handler);
    [[nodiscard]] bool isListedIn(const QStringList& items) const;

    QDBusConnection m_connection;
    QString m_service;
    std::shared_ptr<StatusNotifierQueue> m_queue;
    int m_place;
    std::function<void(TrayHost)> m_onHost;
    bool m_isQueued = false;
    std::chrono::milliseconds m_patience;
    QDBusServiceWatcher m_owner;
    QTimer m_timer;
    std::function<void()> m_step;
    int m_attempts = 0;
    std::unique_ptr<QDBusPendingCallWatcher> m_pending;
};

}  // namespace tidemark
