#pragma once

#include <QDBusConnection>
#include <QDBusContext>
#include <QObject>
#include <QStringList>

namespace tidemark {

/// A panel's org.kde.StatusNotifierWatcher on a bus connection of its own. It can refuse or forget the first
/// registrations, as real watchers do while they load.
class FakeStatusNotifierWatcher final : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(QStringList RegisteredStatusNotifierItems READ items)

public:
    FakeStatusNotifierWatcher();
    ~FakeStatusNotifierWatcher() override;

    /// Takes the watcher's name, also from another watcher.
    void appear();

    [[nodiscard]] QStringList items();

    int refusals = 0;
    int lapses = 0;
    int registrations = 0;
    int listReads = 0;

public Q_SLOTS:
    void RegisterStatusNotifierItem(const QString& service);

private:
    QDBusConnection m_connection;
    QStringList m_items;
};

}  // namespace tidemark
