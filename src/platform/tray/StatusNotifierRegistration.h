#pragma once

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QString>
#include <chrono>
#include <functional>
#include <memory>
#include <stop_token>

#include "platform/base/TaskScope.h"
#include "platform/tray/StatusNotifierQueue.h"
#include "platform/tray/TrayHost.h"

namespace tidemark {

/// Keeps an item registered with the panel's StatusNotifierWatcher: now, when a watcher appears later, and
/// again whenever another one takes over. It ignores IsStatusNotifierHostRegistered, because some watchers
/// report it wrongly. Calls never block, and no timer runs once the item is registered.
class StatusNotifierRegistration final : public QObject {
    Q_OBJECT

public:
    /// `service` is the item's own name on `connection`; `queue` is shared by all items. `patience` is the
    /// delay after which the item is looked up in the watcher's list (GNOME's occasionally drops an item
    /// while it loads), and after which a failed registration is repeated. The delay doubles with each of six
    /// attempts.
    ///
    /// `onHost` is called with the watcher's kind of tray before the item is registered there.
    StatusNotifierRegistration(QDBusConnection connection, QString service,
                               std::shared_ptr<StatusNotifierQueue> queue,
                               std::function<void(TrayHost)> onHost,
                               std::chrono::milliseconds patience = std::chrono::seconds(2));

private:
    enum class Outcome : quint8 {
        accepted,
        refused,
        nobodyThere,  ///< there is no watcher to register with
    };

    void start();
    QCoro::Task<> run(std::stop_token stop);
    QCoro::Task<TrayHost> identifyHost(std::stop_token stop);
    QCoro::Task<Outcome> registerItem(std::stop_token stop);
    /// Whether the watcher has the item in its list. True as well for a watcher without a list.
    QCoro::Task<bool> isListed(std::stop_token stop);
    [[nodiscard]] bool isListedIn(const QStringList& items) const;

    QDBusConnection m_connection;
    QString m_service;
    std::shared_ptr<StatusNotifierQueue> m_queue;
    int m_place;
    std::function<void(TrayHost)> m_onHost;
    bool m_isQueued = false;
    std::chrono::milliseconds m_patience;
    QDBusServiceWatcher m_owner;
    TaskHandle m_run;
    /// Last: its tasks use the members above.
    TaskScope m_tasks;
};

}  // namespace tidemark
