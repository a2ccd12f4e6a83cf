#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusServiceWatcher>

#include "platform/keyring/KeychainWatcher.h"

namespace tidemark {

/// Watches the desktop's keyring, after the Secret Service standard: its coming to the bus, and the unlocking
/// and making of its collections. It starts no service, asks nobody to unlock one and never wakes up by
/// itself.
///
/// gnome-keyring tells nobody when the login unlocks it (as it does after a locked screen, tried with 42).
class SecretServiceWatcher final : public KeychainWatcher {
    Q_OBJECT

public:
    /// A `bus` that is not connected is the same as no keyring.
    explicit SecretServiceWatcher(QDBusConnection bus);

private Q_SLOTS:
    void onPropertiesChanged(const QDBusMessage& signal);
    void onCollection(const QDBusMessage& signal);

private:
    QDBusConnection m_bus;
    QDBusServiceWatcher m_owner;
};

}  // namespace tidemark
