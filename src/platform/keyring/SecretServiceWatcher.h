#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <stop_token>

#include "platform/base/TaskScope.h"
#include "platform/keyring/KeychainWatcher.h"

namespace tidemark {

/// Watches the desktop's keyring (Secret Service standard): reports when it appears on the bus and when one
/// of its collections is created or unlocked. It starts no service, never asks the user to unlock one, and
/// runs no timer.
///
/// gnome-keyring sends no signal when the login unlocks it. It does after a locked screen (tested with
/// version 42).
class SecretServiceWatcher final : public KeychainWatcher {
    Q_OBJECT

public:
    /// Without a connection, `bus` behaves as if there were no keyring.
    explicit SecretServiceWatcher(QDBusConnection bus);

private Q_SLOTS:
    void onPropertiesChanged(const QDBusMessage& signal);
    void onCollection(const QDBusMessage& signal);

private:
    QCoro::Task<> reportIfUnlocked(QString service, QString collection, std::stop_token stop);

    QDBusConnection m_bus;
    QDBusServiceWatcher m_owner;
    /// Last: its tasks use the members above.
    TaskScope m_tasks;
};

}  // namespace tidemark
