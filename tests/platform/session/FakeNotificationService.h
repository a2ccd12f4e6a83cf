#pragma once

#include <QDBusConnection>
#include <QDBusVirtualObject>
#include <QList>
#include <QStringList>
#include <QVariantList>

namespace tidemark {

/// A desktop's org.freedesktop.Notifications on a bus connection of its own, well behaved or not.
class FakeNotificationService final : public QDBusVirtualObject {
public:
    FakeNotificationService();
    ~FakeNotificationService() override;

    /// Takes the service's name, from another service if need be.
    void appear();

    /// What it answers when asked for its capabilities; without a value, an error.
    QVariant capabilities = QStringList{QStringLiteral("body"), QStringLiteral("actions")};
    bool isSilent = false;
    /// Signals, each with its arguments, that it sends before it answers the next notification.
    QList<std::pair<QString, QVariantList>> early;
    uint nextId = 1;

    /// The arguments of each notification.
    QList<QVariantList> notifications;
    int callCount = 0;

    /// Tells every program.
    void emitSignal(const QString& name, const QVariantList& arguments) const;

    [[nodiscard]] QString introspect(const QString& path) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

private:
    [[nodiscard]] QDBusMessage answerTo(const QDBusMessage& message);

    QDBusConnection m_connection;
};

}  // namespace tidemark
